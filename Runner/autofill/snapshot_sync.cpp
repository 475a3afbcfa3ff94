#include "autofill/snapshot_sync.h"

#include <array>
#include <cstdint>
#include <utility>

#include "storage/app_group_snapshot.h"
#include "storage/json_array_writer.h"
#include "storage/sealed_file.h"
#include "storage/shared_keychain.h"

namespace norvane {
namespace {

constexpr MemberNames<5> kMembers{"id", "title", "url", "username", "password"};

/// Appends the entry of each item that makes one; gives their number.
std::int64_t writeEntries(const Items& items, JsonArrayWriter& json) {
  std::int64_t written = 0;
  const bool complete = items.visit<kMembers>([&](const auto& texts) {
    const auto& [id, title, url, username, password] = texts;
    if (!id || !username || !isNotEmpty(password)) return;
    const std::array<JsonMember, 5> entry{{{"id", *id},
                                           {"title", title.value_or("")},
                                           {"url", url.value_or("")},
                                           {"username", *username},
                                           {"password", *password}}};
    json.object(entry);
    ++written;
  });
  if (!complete) {
    json.discard();
    written = 0;
  }
  json.finish();
  return written;
}

}  // namespace

FlutterValue writeSnapshot(const Items& items, const std::string& accessGroup) {
  Plaintext plaintext(items.messageSize());  // seldom more: an item has members that no entry has
  JsonArrayWriter json(plaintext.text());
  const std::int64_t written = writeEntries(items, json);

  writeSealedFile(
      std::move(plaintext), [&](auto key) { SharedKeychain::saveSessionKey(key, accessGroup); },
      AppGroupSnapshot::snapshotURL);
  return FlutterMap{{"written", written}, {"encrypted", true}};
}

void removeSnapshot(const std::string& accessGroup) noexcept {
  removeSealedFile([&] { SharedKeychain::deleteSessionKey(accessGroup); },
                   AppGroupSnapshot::deleteSnapshot);
}

}  // namespace norvane
