#pragma once

#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "base/secure_memory.h"
#include "platform/flutter/standard_message.h"

namespace norvane {

/// A login as the UI sends it.
struct Login {
  std::string id, title, url, username, password, notes;
  std::vector<std::string> tags;

  bool isComplete() const { return !password.empty(); }
};

/// A vault as people have them: the same logins for the same `count`, in every program. A quarter
/// of the titles, names and notes is not ASCII; a generated password may have any printable
/// character, so that a third of the logins has one that JSON escapes; 45 % of the notes are empty
/// and one in a hundred is long; one login in a hundred has no password.
inline std::vector<Login> makeLogins(std::size_t count) {
  static constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789-_";
  static constexpr std::array<std::string_view, 4> kTitles{"Online banking", "Mail", "Work account",
                                                           "Forum"};
  static constexpr std::array<std::string_view, 4> kOtherTitles{
      "Überweisung Sparkasse", "東京電力 ログイン", "Почта России", "Café crème ☕"};
  static constexpr std::array<std::string_view, 4> kNames{"ann", "bob.miller", "c_jones", "office"};
  static constexpr std::array<std::string_view, 4> kOtherNames{"jürgen", "мария", "françois",
                                                               "田中"};
  static constexpr std::array<std::string_view, 4> kSentences{
      "Ask at the desk for a new card. ", "Valid until the end of next year.\n",
      "Recovery code in the blue folder. ", "Second factor: phone. "};
  static constexpr std::array<std::string_view, 4> kOtherSentences{
      "Änderung nur in der Zweigstelle möglich. ", "Спросить пароль у бухгалтера.\n",
      "再発行には本人確認が必要です。", "Où est passée la clé ? "};
  std::mt19937 random(20'240'901);
  const auto between = [&](std::size_t least, std::size_t most) {
    return least + random() % (most - least + 1);
  };
  const auto percent = [&](unsigned share) { return random() % 100 < share; };
  const auto oneOf = [&](const auto& texts) { return texts[random() % texts.size()]; };
  const auto letters = [&](std::size_t size) {
    std::string text(size, ' ');
    for (char& letter : text) letter = kLetters[random() % kLetters.size()];
    return text;
  };
  const auto password = [&] {
    std::string text(between(12, 28), ' ');
    for (char& letter : text) letter = static_cast<char>(between('!', '~'));
    return text;
  };
  const auto write = [&](std::string& notes) {
    const std::size_t size = percent(1) ? between(1'000, 8'000) : between(20, 220);
    const bool other = percent(25);
    while (notes.size() < size) notes += other ? oneOf(kOtherSentences) : oneOf(kSentences);
  };
  std::vector<Login> logins(count);
  for (std::size_t i = 0; i < count; ++i) {
    Login& login = logins[i];
    login.id = letters(36);
    login.title = percent(25) ? oneOf(kOtherTitles) : oneOf(kTitles);
    login.url = "https://" + letters(between(8, 24)) + ".example.org/login";
    login.username = percent(25) ? oneOf(kOtherNames) : oneOf(kNames);
    login.username += "@example.org";
    if (i % 100 != 99) login.password = password();
    if (!percent(45)) write(login.notes);
    for (std::size_t tag = between(0, 2); tag > 0; --tag) login.tags.push_back(letters(6));
  }
  return logins;
}

/// The call with which the UI hands them over.
inline Bytes syncCall(const std::vector<Login>& logins) {
  Bytes message;
  message.reserve(400 * logins.size() + 100);
  StandardMessageWriter out(message);
  const auto member = [&](std::string_view key, std::string_view value) {
    out.text(key);
    out.text(value);
  };
  out.text("syncVaultSnapshot");
  out.map(1);
  out.text("items");
  out.list(logins.size());
  for (const Login& login : logins) {
    out.map(7);
    member("id", login.id);
    member("title", login.title);
    member("url", login.url);
    member("username", login.username);
    member("password", login.password);
    member("notes", login.notes);
    out.text("tags");
    out.list(login.tags.size());
    for (const std::string& tag : login.tags) out.text(tag);
  }
  return message;
}

}  // namespace norvane
