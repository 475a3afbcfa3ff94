#include "platform/console/console_values.h"

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "base/base64.h"
#include "platform/console/json_members.h"
#include "platform/flutter/standard_message.h"

namespace norvane {
namespace {

constexpr const char* kBytesKey = "$bytes";

std::vector<std::uint8_t> bytesOf(const JsonValue& value) {
  if (!value.IsString()) throw JsonError("\"$bytes\" must be a text");
  const std::string_view text = textOf(value);  // in place: a short copy would stay on the stack
  auto bytes = decodeBase64(text);
  // The decoder does without padding; in a script that is rather a slip.
  if (!bytes || text.size() % 4 != 0) throw JsonError("\"$bytes\" must be base64");
  return std::move(*bytes);
}

void encode(StandardMessageWriter& out, const JsonValue& value, int depth) {
  if ((value.IsArray() || value.IsObject()) && depth == kMaxNesting) {
    throw JsonError("the arguments nest too deep");  // no such message would be decoded
  }
  if (value.IsNull()) {
    out.null();
  } else if (value.IsBool()) {
    out.boolean(value.GetBool());
  } else if (value.IsInt()) {
    out.int32(value.GetInt());
  } else if (value.IsInt64()) {
    out.int64(value.GetInt64());
  } else if (value.IsNumber()) {
    out.float64(value.GetDouble());
  } else if (value.IsString()) {
    out.text(textOf(value));
  } else if (value.IsArray()) {
    out.list(value.Size());
    for (const JsonValue& element : value.GetArray()) encode(out, element, depth + 1);
  } else if (value.MemberCount() == 1 && value.MemberBegin()->name == kBytesKey) {
    out.bytes(bytesOf(value.MemberBegin()->value));
  } else {
    out.map(value.MemberCount());
    for (const auto& [key, mapped] : value.GetObject()) {
      out.text(textOf(key));
      encode(out, mapped, depth + 1);
    }
  }
}

void writeNumber(JsonWriter& writer, double value) {
  if (!std::isfinite(value)) {
    writer.Null();  // JSON has no other word for it
  } else {
    writer.Double(value);
  }
}
void writeNumber(JsonWriter& writer, float value) { writeNumber(writer, double{value}); }
void writeNumber(JsonWriter& writer, std::int64_t value) { writer.Int64(value); }
void writeNumber(JsonWriter& writer, std::int32_t value) { writer.Int(value); }

template <class Numbers>
void writeNumbers(JsonWriter& writer, const Numbers& numbers) {
  writer.StartArray();
  for (const auto number : numbers) writeNumber(writer, number);
  writer.EndArray();
}

void writeBytes(JsonWriter& writer, std::span<const std::uint8_t> bytes) {
  writer.StartObject();
  base64Member(writer, kBytesKey, bytes);
  writer.EndObject();
}

// JSON has texts for keys, the codec has any value.
void writeKey(JsonWriter& writer, FlutterValueView key) {
  if (const auto text = key.text()) {
    writeText(writer, *text);
    return;
  }
  JsonBuffer buffer;
  JsonWriter inner(buffer);
  writeConsoleValue(inner, key);
  writeText(writer, {buffer.GetString(), buffer.GetSize()});
}

}  // namespace

Bytes encodeConsoleCall(std::string_view method, const JsonValue* arguments) {
  Bytes message;
  StandardMessageWriter out(message);
  out.text(method);
  if (arguments) {
    encode(out, *arguments, 0);
  } else {
    out.null();
  }
  return message;
}

void writeConsoleValue(JsonWriter& writer, FlutterValueView value) {
  switch (value.type()) {
    case FlutterType::null:
      writer.Null();
      break;
    case FlutterType::yes:
    case FlutterType::no:
      writer.Bool(*value.boolean());
      break;
    case FlutterType::int32:
    case FlutterType::int64:
      writer.Int64(*value.integer());
      break;
    case FlutterType::float64:
      writeNumber(writer, *value.float64());
      break;
    case FlutterType::text:
      writeText(writer, *value.text());
      break;
    case FlutterType::bytes:
      writeBytes(writer, *value.bytes());
      break;
    case FlutterType::int32List:
      writeNumbers(writer, *value.int32List());
      break;
    case FlutterType::int64List:
      writeNumbers(writer, *value.int64List());
      break;
    case FlutterType::float32List:
      writeNumbers(writer, *value.float32List());
      break;
    case FlutterType::float64List:
      writeNumbers(writer, *value.float64List());
      break;
    case FlutterType::list: {
      const auto elements = value.list();
      writer.StartArray();
      for (const FlutterValueView element : *elements) writeConsoleValue(writer, element);
      writer.EndArray();
      break;
    }
    case FlutterType::map: {
      const auto entries = value.map();
      writer.StartObject();
      for (const auto& [key, mapped] : *entries) {
        writeKey(writer, key);
        writeConsoleValue(writer, mapped);
      }
      writer.EndObject();
      break;
    }
  }
}

}  // namespace norvane
