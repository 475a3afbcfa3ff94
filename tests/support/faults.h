#pragma once

#include <cstdint>
#include <optional>

#include "platform/crypto.h"
#include "platform/keychain.h"
#include "platform/ns_file_manager.h"

namespace norvane {

/// Decides which call of a service fails: the Nth that comes, once or for good.
class Fault {
 public:
  void failNth(int nth, bool forGood = false) {
    left_ = nth;
    forGood_ = forGood;
    struck_ = false;
  }
  void none() { left_.reset(); }
  /// Whether a call has failed since `failNth`.
  bool struck() const { return struck_; }

  /// Asked by each call.
  bool strikes() {
    if (!left_) return false;
    if (*left_ > 0) --*left_;
    if (*left_ > 0 || (struck_ && !forGood_)) return false;
    return struck_ = true;
  }

 private:
  std::optional<int> left_;
  bool forGood_ = false;
  bool struck_ = false;
};

// Services that pass every call on to the real ones, unless their fault strikes.

class FaultyKeychain : public Keychain {
 public:
  FaultyKeychain(Keychain& real, Fault& fault) : real_(real), fault_(fault) {}
  static constexpr OSStatus kStatus = -25308;

  OSStatus SecItemUpdate(const KeychainQuery& query,
                         const KeychainAttributes& attributes) override {
    return fault_.strikes() ? kStatus : real_.SecItemUpdate(query, attributes);
  }
  OSStatus SecItemAdd(const KeychainQuery& item, const KeychainAttributes& attributes,
                      bool synchronizable) override {
    return fault_.strikes() ? kStatus : real_.SecItemAdd(item, attributes, synchronizable);
  }
  OSStatus SecItemDelete(const KeychainQuery& query) override {
    return fault_.strikes() ? kStatus : real_.SecItemDelete(query);
  }

 private:
  Keychain& real_;
  Fault& fault_;
};

class FaultyCrypto : public Crypto {
 public:
  FaultyCrypto(Crypto& real, Fault& fault) : real_(real), fault_(fault) {}

  std::int32_t SecRandomCopyBytes(std::span<std::uint8_t> bytes) override {
    return fault_.strikes() ? -1 : real_.SecRandomCopyBytes(bytes);
  }
  bool sealAESGCM(std::span<const std::uint8_t, 32> key, std::span<std::uint8_t> box) override {
    return !fault_.strikes() && real_.sealAESGCM(key, box);
  }

 private:
  Crypto& real_;
  Fault& fault_;
};

}  // namespace norvane
