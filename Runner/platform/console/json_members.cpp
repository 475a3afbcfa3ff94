#include "platform/console/json_members.h"

#include "platform/linux/glib_handles.h"

namespace norvane {

void member(JsonWriter& writer, const char* key, std::optional<std::string_view> text) {
  writer.Key(key);
  if (text) {
    writeText(writer, *text);
  } else {
    writer.Null();
  }
}

void member(JsonWriter& writer, const char* key, std::initializer_list<double> numbers) {
  writer.Key(key);
  writer.StartArray();
  for (const double number : numbers) writer.Double(number);
  writer.EndArray();
}

void member(JsonWriter& writer, const char* key, bool value) {
  writer.Key(key);
  writer.Bool(value);
}

void member(JsonWriter& writer, const char* key, std::int64_t value) {
  writer.Key(key);
  writer.Int64(value);
}

void base64Member(JsonWriter& writer, const char* key, std::span<const std::uint8_t> bytes) {
  const GTextPtr text(g_base64_encode(bytes.data(), bytes.size()));
  member(writer, key, text.get());
}

}  // namespace norvane
