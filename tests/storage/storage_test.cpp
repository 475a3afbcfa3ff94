#include <array>

#include <glib.h>
#include <nlohmann/json.hpp>

#include "storage/json_array_writer.h"
#include "storage/passkey_index.h"
#include "storage/snapshot_crypto.h"
#include "storage/storage_errors.h"
#include "support/auto_fill_test.h"

namespace norvane {
namespace {

using StorageTest = HostTest;

std::string textOf(const SecureBuffer& buffer) {
  return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

std::string sealed(std::string_view text, std::span<const std::uint8_t> key,
                   std::size_t capacity = 0) {
  Plaintext plaintext(capacity);
  std::copy(text.begin(), text.end(), plaintext.text().space(text.size()));
  plaintext.text().advance(text.size());
  return textOf(SnapshotCrypto::encrypt(std::move(plaintext), key));
}

TEST_F(StorageTest, EnvelopesOfAllSizesOpenAndAreSealedAnewEachTime) {
  SessionKey key;
  SnapshotCrypto::generateSessionKey(key);
  for (const std::size_t size : {0, 1, 15, 16, 17, 4068, 4069, 4096, 300000, 5000000}) {
    std::string text(size, 'x');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 31 >> 3);
    const std::string envelope = sealed(text, key.bytes, size / 2);
    EXPECT_EQ(envelope.size(), size + 28);
    EXPECT_EQ(openEnvelope(key.bytes, envelope), text) << size;
    EXPECT_NE(sealed(text, key.bytes, 2 * size), envelope) << "the same nonce";
  }
}

TEST_F(StorageTest, KeysOfOtherLengthsAreRefused) {
  for (const std::size_t size : {0, 16, 31, 33}) {
    try {
      sealed("text", std::vector<std::uint8_t>(size));
      FAIL() << size;
    } catch (const StorageFailure<SnapshotCryptoError>& failure) {
      EXPECT_STREQ(failure.what(), "key must be 32 bytes");
    }
  }
}

// JSON

using Entries = std::vector<std::map<std::string, std::string>>;

std::string jsonOf(const Entries& entries) {
  SecureBuffer buffer;
  JsonArrayWriter writer(buffer);
  for (const auto& entry : entries) {
    writer.object(std::vector<JsonMember>(entry.begin(), entry.end()));
  }
  writer.finish();
  return textOf(buffer);
}

TEST(JsonArrayWriterTest, ACharacterIsReadBackWhereverItStands) {
  Entries entries;
  for (gunichar scalar = 0; scalar <= 0x80; ++scalar) {
    for (const std::size_t size : {1, 3, 7, 8, 15, 16, 17, 40, 65}) {
      std::map<std::string, std::string> entry;
      for (std::size_t at = 0; at < size; ++at) {
        const std::string before(at, '~'), after(size - at - 1, '~');
        char bytes[6];
        const std::string character(bytes, g_unichar_to_utf8(scalar, bytes));
        entry.emplace(std::to_string(at), before + character + after);
        entry.emplace(std::to_string(at) + " twice", before + character + after + character);
      }
      entries.push_back(entry);
    }
  }
  EXPECT_TRUE(nlohmann::json::parse(jsonOf(entries)) == entries);
  EXPECT_EQ(jsonOf({}), "[]");
  EXPECT_EQ(jsonOf({{}, {{"a", ""}, {"b", " "}}}), R"([{},{"a":"","b":" "}])");
}

TEST(JsonArrayWriterTest, WhatIsDiscardedIsWipedAndWritingGoesOn) {
  SecureBuffer buffer;
  JsonArrayWriter writer(buffer);
  const std::array<JsonMember, 1> secret{{{"password", "hunter2"}}};
  writer.object(secret);
  const std::string_view written(reinterpret_cast<const char*>(buffer.data()), buffer.size());
  writer.discard();
  EXPECT_EQ(written, "[" + std::string(written.size() - 1, '\0'));
  writer.object({});
  writer.finish();
  EXPECT_EQ(textOf(buffer), "[{}]");
}

}  // namespace
}  // namespace norvane
