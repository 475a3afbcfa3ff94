#include "platform/linux/json.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include <malloc.h>
#include <rapidjson/error/en.h>

#include "base/secure_memory.h"

namespace norvane {
namespace {

// Deeper than any message may nest, and far from costing a stack.
constexpr int kMaxDepth = 256;

bool nestsDeeperThan(const JsonValue& value, int levels) {
  const auto deeper = [&](const JsonValue& inner) {
    return levels == 0 || nestsDeeperThan(inner, levels - 1);
  };
  if (value.IsArray()) return std::ranges::any_of(value.GetArray(), deeper);
  if (!value.IsObject()) return false;
  return std::ranges::any_of(value.GetObject(),
                             [&](const auto& member) { return deeper(member.value); });
}

void expect(bool fits, const std::string& what, const char* type) {
  if (!fits) throw JsonError(what + " must be " + type);
}

}  // namespace

void* JsonAllocator::Malloc(std::size_t size) {
  if (size == 0) return nullptr;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

// Never in place: realloc would leave an unwiped copy behind.
void* JsonAllocator::Realloc(void* memory, std::size_t oldSize, std::size_t newSize) {
  void* grown = Malloc(newSize);
  if (memory && grown) std::memcpy(grown, memory, std::min(oldSize, newSize));
  Free(memory);
  return grown;
}

void JsonAllocator::Free(void* memory) {
  if (memory) secureWipe(memory, malloc_usable_size(memory));
  std::free(memory);
}

JsonSyntaxError::JsonSyntaxError(const std::string& why, std::size_t at)
    : JsonError("not JSON: " + why + " (at byte " + std::to_string(at) + ")"),
      reason(why),
      offset(at) {}

JsonDocument parseJson(std::string_view text) {
  JsonDocument document;
  // Iterative: the text's depth must not cost stack before it is known.
  document.Parse<rapidjson::kParseValidateEncodingFlag | rapidjson::kParseIterativeFlag>(
      text.data(), text.size());
  if (document.HasParseError()) {
    throw JsonSyntaxError(rapidjson::GetParseError_En(document.GetParseError()),
                          document.GetErrorOffset());
  }
  if (nestsDeeperThan(document, kMaxDepth)) throw JsonError("nested too deep");
  return document;
}

const JsonValue* find(const JsonValue& object, const char* key) {
  const auto member = object.FindMember(key);
  return member == object.MemberEnd() ? nullptr : &member->value;
}

const JsonValue& require(const JsonValue& object, const char* key) {
  if (const JsonValue* value = find(object, key)) return *value;
  throw JsonError("\"" + std::string(key) + "\" is missing");
}

void expectOnly(const JsonValue& object, std::span<const std::string_view> keys) {
  for (const auto& [name, value] : object.GetObject()) {
    if (std::ranges::find(keys, textOf(name)) == keys.end()) {
      throw JsonError("unknown key \"" + std::string(textOf(name)) + "\"");
    }
  }
}

const JsonValue& expectObject(const JsonValue& value, const std::string& what) {
  expect(value.IsObject(), what, "an object");
  return value;
}

const JsonValue& expectArray(const JsonValue& value, const std::string& what) {
  expect(value.IsArray(), what, "a list");
  return value;
}

std::string expectText(const JsonValue& value, const std::string& what) {
  expect(value.IsString(), what, "a text");
  return std::string(textOf(value));
}

bool expectBoolean(const JsonValue& value, const std::string& what) {
  expect(value.IsBool(), what, "true or false");
  return value.GetBool();
}

std::uint32_t expectCode(const JsonValue& value, const std::string& what) {
  expect(value.IsUint(), what, "a whole number from 0");
  return value.GetUint();
}

double expectNumber(const JsonValue& value, const std::string& what) {
  expect(value.IsNumber(), what, "a number");
  return value.GetDouble();
}

}  // namespace norvane
