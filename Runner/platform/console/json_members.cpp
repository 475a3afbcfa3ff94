#include "platform/console/json_members.h"

#include <glib.h>

#include "base/secure_memory.h"

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
  Bytes text((bytes.size() / 3 + 1) * 4 + 4);  // what g_base64_encode_step asks for
  auto* const out = reinterpret_cast<gchar*>(text.data());
  gint state = 0;
  gint save = 0;
  gsize size = g_base64_encode_step(bytes.data(), bytes.size(), FALSE, out, &state, &save);
  size += g_base64_encode_close(FALSE, out + size, &state, &save);
  member(writer, key, std::string_view(out, size));
}

}  // namespace norvane
