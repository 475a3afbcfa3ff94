#include "platform/explorer/message_text.h"

#include <rapidjson/prettywriter.h>

#include "platform/console/console_values.h"
#include "platform/console/json_members.h"

namespace norvane {
namespace {

constexpr std::size_t kMostShown = 64 * 1024;
constexpr std::size_t kMostInShort = 160;

/// `text`, or its beginning up to a whole character, and what it is the beginning of.
std::string cut(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  std::size_t end = most;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "… (" + std::to_string(text.size()) + " bytes)";
}

template <class Write>
JsonBuffer written(Write write) {
  JsonBuffer buffer;
  JsonWriter writer(buffer);
  write(writer);
  return buffer;
}

std::string_view textOf(const JsonBuffer& buffer) { return {buffer.GetString(), buffer.GetSize()}; }

std::string forPeople(const JsonBuffer& json) {
  if (json.GetSize() > kMostShown) return cut(textOf(json), kMostShown);
  return jsonForPeople(parseJson(textOf(json)));
}

void writeError(JsonWriter& writer, const FlutterReply& reply) {
  writer.StartObject();
  member(writer, "code", reply.errorCode);
  member(writer, "message", reply.errorMessage);
  writer.EndObject();
}

}  // namespace

std::string jsonForPeople(const JsonValue& value) {
  JsonBuffer buffer;
  rapidjson::PrettyWriter<JsonBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator> writer(
      buffer);
  writer.SetIndent(' ', 2);
  value.Accept(writer);
  return std::string(textOf(buffer));
}

std::string jsonForPeople(FlutterValueView value) {
  return forPeople(written([&](JsonWriter& writer) { writeConsoleValue(writer, value); }));
}

std::string jsonInShort(FlutterValueView value) {
  const auto json = written([&](JsonWriter& writer) { writeConsoleValue(writer, value); });
  return cut(textOf(json), kMostInShort);
}

const char* typeName(FlutterValueView value) {
  switch (value.type()) {
    case FlutterType::null:
      return "null";
    case FlutterType::yes:
    case FlutterType::no:
      return "boolean";
    case FlutterType::int32:
    case FlutterType::int64:
      return "integer";
    case FlutterType::float64:
      return "double";
    case FlutterType::text:
      return "text";
    case FlutterType::bytes:
      return "bytes";
    case FlutterType::map:
      return "map";
    default:
      return "list";
  }
}

std::string kindOf(const FlutterReply& reply) {
  switch (reply.kind) {
    case FlutterReply::Kind::success:
      return std::string("success, ") + typeName(reply.value);
    case FlutterReply::Kind::error:
      return "error";
    default:
      return "not implemented";
  }
}

std::string contentOf(const FlutterReply& reply) {
  switch (reply.kind) {
    case FlutterReply::Kind::success:
      return jsonForPeople(reply.value);
    case FlutterReply::Kind::error:
      return forPeople(written([&](JsonWriter& writer) { writeError(writer, reply); }));
    default:
      return {};
  }
}

}  // namespace norvane
