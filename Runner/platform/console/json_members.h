#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

#include "platform/linux/json.h"

namespace norvane {

// Members of the object that `writer` is in. Where there is no value they are null.

void member(JsonWriter& writer, const char* key, std::optional<std::string_view> text);
void member(JsonWriter& writer, const char* key, std::initializer_list<double> numbers);
void member(JsonWriter& writer, const char* key, bool value);
void member(JsonWriter& writer, const char* key, std::int64_t value);

/// Bytes as base64.
void base64Member(JsonWriter& writer, const char* key, std::span<const std::uint8_t> bytes);

inline void member(JsonWriter& writer, const char* key, const char* text) {
  member(writer, key, std::string_view(text));
}
inline void member(JsonWriter& writer, const char* key, const std::string& text) {
  member(writer, key, std::string_view(text));
}

}  // namespace norvane
