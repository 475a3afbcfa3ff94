#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#include "base/secure_memory.h"
#include "platform/flutter/standard_message.h"

namespace norvane {

/// The call with which the UI hands over a vault: 283 bytes a login on the wire, 18 % of the titles
/// not ASCII, 45 % of the notes empty, one login in a hundred without a password. The same bytes
/// for the same `count`, in every program.
inline Bytes syncCall(std::size_t count) {
  static constexpr std::string_view kLetters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  static constexpr std::string_view kTitles[] = {"Online banking", "Mail", "Work account", "Forum"};
  static constexpr std::string_view kOtherTitles[] = {"Überweisung Sparkasse", "東京電力 ログイン",
                                                      "Почта России", "Café crème ☕"};
  std::mt19937 random(20'240'901);
  const auto between = [&](std::size_t least, std::size_t most) {
    return least + random() % (most - least + 1);
  };
  const auto letters = [&](std::size_t size) {
    std::string result(size, ' ');
    for (char& letter : result) letter = kLetters[random() % kLetters.size()];
    return result;
  };
  Bytes message;
  message.reserve(300 * count + 100);
  StandardMessageWriter out(message);
  const auto member = [&](std::string_view key, std::string_view value) {
    out.text(key);
    out.text(value);
  };
  out.text("syncVaultSnapshot");
  out.map(1);
  out.text("items");
  out.list(count);
  for (std::size_t i = 0; i < count; ++i) {
    out.map(7);
    member("id", letters(36));
    member("title", random() % 100 < 18 ? kOtherTitles[random() % 4] : kTitles[random() % 4]);
    member("url", "https://" + letters(between(8, 24)) + ".example.org/login");
    member("username", letters(between(6, 14)) + "@example.org");
    member("password", i % 100 == 99 ? std::string() : letters(between(12, 32)));
    member("notes", random() % 100 < 45 ? std::string() : letters(between(20, 260)));
    out.text("tags");
    const std::size_t tags = between(0, 2);
    out.list(tags);
    for (std::size_t tag = 0; tag < tags; ++tag) out.text(letters(6));
  }
  return message;
}

/// How many of them have all that a login needs.
inline std::size_t completeLogins(std::size_t count) { return count - count / 100; }

}  // namespace norvane
