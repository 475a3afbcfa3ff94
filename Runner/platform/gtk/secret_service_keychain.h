#pragma once

#include <chrono>
#include <functional>
#include <mutex>

#include "platform/dispatch.h"
#include "platform/keychain.h"

namespace norvane {

/// The session's keyring, by the Secret Service on D-Bus. It never asks the person for a password:
/// a locked keyring is errSecInteractionNotAllowed, and so is one that does not answer within two
/// seconds on the main thread or ten on any other. One that did not answer is left alone for a
/// while, so that calls which wait for one another do not each wait for it. Without a service or a
/// bus: errSecNotAvailable.
class SecretServiceKeychain : public Keychain {
 public:
  /// `dispatch` knows the main thread.
  explicit SecretServiceKeychain(const Dispatch& dispatch) : dispatch_(dispatch) {}

  OSStatus SecItemUpdate(const KeychainQuery& query, const KeychainAttributes& attributes) override;
  OSStatus SecItemAdd(const KeychainQuery& item, const KeychainAttributes& attributes,
                      bool synchronizable) override;
  OSStatus SecItemDelete(const KeychainQuery& query) override;

 private:
  class Session;
  OSStatus answer(const KeychainQuery& query, const std::function<OSStatus(Session&)>& call);

  const Dispatch& dispatch_;
  // To look for an item and then to add it is two calls of the service; nobody may come between.
  std::timed_mutex mutex_;
  std::chrono::steady_clock::time_point leftAloneUntil_;
};

}  // namespace norvane
