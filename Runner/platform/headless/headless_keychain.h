#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/headless/keychain_directory.h"
#include "platform/headless/live_profile.h"
#include "platform/keychain.h"

namespace norvane {

/// A keychain on disk, whose calls answer what the profile says where it says something.
class HeadlessKeychain : public Keychain {
 public:
  HeadlessKeychain(const std::string& dataDirectory, const LiveProfile& profile);

  /// The person's side.
  std::vector<KeychainDirectory::Item> items() const;

  OSStatus SecItemUpdate(const KeychainQuery& query, const KeychainAttributes& attributes) override;
  OSStatus SecItemAdd(const KeychainQuery& item, const KeychainAttributes& attributes,
                      bool synchronizable) override;
  OSStatus SecItemDelete(const KeychainQuery& query) override;

 private:
  OSStatus answer(std::optional<OSStatus> forced, const std::function<OSStatus()>& call);

  const LiveProfile& profile_;
  mutable std::mutex mutex_;
  KeychainDirectory directory_;
};

}  // namespace norvane
