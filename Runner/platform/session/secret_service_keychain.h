#pragma once

#include <functional>
#include <mutex>

#include "platform/keychain.h"
#include "platform/linux/glib_dispatch.h"

namespace norvane {

class SecretServiceSession;

/// The session's keyring, by the Secret Service on D-Bus. It never asks the person for a password:
/// a locked keyring is errSecInteractionNotAllowed, and so is one that does not answer within two
/// seconds. While the main thread waits for workers, all calls together have two seconds from the
/// beginning of that wait. One that did not answer is left alone for a while, so that calls which
/// wait for one another do not each wait for it. Without a service or a bus: errSecNotAvailable.
class SecretServiceKeychain : public Keychain {
 public:
  /// `dispatch` knows whether the main thread waits.
  explicit SecretServiceKeychain(const GlibDispatch& dispatch) : dispatch_(dispatch) {}

  OSStatus SecItemUpdate(const KeychainQuery& query, const KeychainAttributes& attributes) override;
  OSStatus SecItemAdd(const KeychainQuery& item, const KeychainAttributes& attributes,
                      bool synchronizable) override;
  OSStatus SecItemDelete(const KeychainQuery& query) override;

 private:
  OSStatus answer(const KeychainQuery& query,
                  const std::function<OSStatus(SecretServiceSession&)>& call);

  const GlibDispatch& dispatch_;
  // To look for an item and then to add it is two calls of the service; nobody may come between.
  std::mutex mutex_;
  GlibDispatch::Clock::time_point leftAloneUntil_;
};

}  // namespace norvane
