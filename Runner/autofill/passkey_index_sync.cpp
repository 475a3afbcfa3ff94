#include "autofill/passkey_index_sync.h"

#include <cstdint>
#include <vector>

#include "storage/passkey_index.h"

namespace norvane {
namespace {

constexpr MemberNames<7> kMembers{"id",        "rp_id",     "credential_id", "private_key",
                                  "algorithm", "user_name", "user_handle"};

std::vector<PasskeyIndex::Entry> entriesOf(const Items& items) {
  std::vector<PasskeyIndex::Entry> entries;
  const bool complete = items.visit<kMembers>([&](const auto& texts) {
    const auto& [id, rpId, credentialId, privateKey, algorithm, userName, userHandle] = texts;
    if (!id || !isNotEmpty(rpId) || !isNotEmpty(credentialId) || !isNotEmpty(privateKey) ||
        !algorithm) {
      return;
    }
    entries.push_back({{"id", *id},
                       {"rp_id", *rpId},
                       {"credential_id", *credentialId},
                       {"private_key", *privateKey},
                       {"algorithm", *algorithm},
                       {"user_name", userName.value_or("")},
                       {"user_handle", userHandle.value_or("")}});
  });
  if (!complete) entries.clear();
  return entries;
}

}  // namespace

FlutterValue writePasskeyIndex(const Items& items, const std::string& accessGroup) {
  const auto entries = entriesOf(items);
  if (entries.empty()) {
    PasskeyIndex::clear(accessGroup);
  } else {
    PasskeyIndex::write(entries, accessGroup);
  }
  return FlutterMap{{"written", static_cast<std::int64_t>(entries.size())}};
}

}  // namespace norvane
