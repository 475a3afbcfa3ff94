#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace norvane {

/// Memory of JSON documents and texts, wiped when freed: the console's lines carry vault items.
class JsonAllocator {
 public:
  static constexpr bool kNeedFree = true;
  void* Malloc(std::size_t size);
  void* Realloc(void* memory, std::size_t oldSize, std::size_t newSize);
  static void Free(void* memory);
  bool operator==(const JsonAllocator&) const = default;
};

using JsonDocument =
    rapidjson::GenericDocument<rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<JsonAllocator>,
                               JsonAllocator>;
using JsonValue = JsonDocument::ValueType;
using JsonBuffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, JsonAllocator>;
/// Refuses texts that are not UTF-8.
using JsonWriter = rapidjson::Writer<JsonBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>,
                                     JsonAllocator, rapidjson::kWriteValidateEncodingFlag>;

/// A text that is not the JSON that was expected; says what is wrong without quoting it.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What is no JSON at all, for `reason`, at the byte `offset` of the text.
class JsonSyntaxError : public JsonError {
 public:
  JsonSyntaxError(const std::string& reason, std::size_t offset);
  const std::string reason;
  const std::size_t offset;
};

/// Parses one JSON value, which may nest some hundred levels; throws JsonError.
JsonDocument parseJson(std::string_view text);

/// The member of `object` under `key`; null when it has none.
const JsonValue* find(const JsonValue& object, const char* key);
/// The same; throws JsonError when it has none.
const JsonValue& require(const JsonValue& object, const char* key);
/// Throws JsonError for a member under any other key.
void expectOnly(const JsonValue& object, std::span<const std::string_view> keys);

// The value as a type, with `what` naming it in the JsonError that is thrown otherwise.
const JsonValue& expectObject(const JsonValue& value, const std::string& what);
const JsonValue& expectArray(const JsonValue& value, const std::string& what);
std::string expectText(const JsonValue& value, const std::string& what);
bool expectBoolean(const JsonValue& value, const std::string& what);
std::uint32_t expectCode(const JsonValue& value, const std::string& what);
double expectNumber(const JsonValue& value, const std::string& what);

inline std::string_view textOf(const JsonValue& text) {
  return {text.GetString(), text.GetStringLength()};
}

inline void writeText(JsonWriter& writer, std::string_view text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

}  // namespace norvane
