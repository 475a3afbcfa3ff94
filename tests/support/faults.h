#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/credential_identity_store.h"
#include "platform/crypto.h"
#include "platform/keychain.h"

namespace norvane {

/// Decides which call of a service fails: the Nth that comes, once or for good. Any thread.
class Fault {
 public:
  void failNth(int nth, bool forGood = false) {
    struck_ = false;
    forGood_ = forGood;
    left_ = nth;
    armed_ = true;
  }
  void none() { armed_ = false; }
  /// Whether a call has failed since `failNth`.
  bool struck() const { return struck_; }

  /// Asked by each call.
  bool strikes() {
    if (!armed_) return false;
    const int left = left_.fetch_sub(1);
    const bool now = left == 1 || (left < 1 && forGood_);
    if (now) struck_ = true;
    return now;
  }

 private:
  std::atomic<bool> armed_ = false;
  std::atomic<int> left_ = 0;
  std::atomic<bool> forGood_ = false;
  std::atomic<bool> struck_ = false;
};

/// Strikes the system calls of the file system that the host makes, with an errno; `kShortWrite`
/// instead lets a write take only a part.
struct SystemFault : Fault {
  static constexpr int kShortWrite = 0;
  int error = 0;
};
extern SystemFault systemFault;

/// Strikes what asks for memory: operator new, malloc and mmap.
extern Fault memoryFault;

// Services that pass every call on to the real ones, unless their fault strikes.

class FaultyKeychain : public Keychain {
 public:
  static constexpr OSStatus kStatus = -25308;

  FaultyKeychain(Keychain& real, Fault& fault, std::vector<std::string>& calls)
      : real_(real), fault_(fault), calls_(calls) {}

  OSStatus SecItemUpdate(const KeychainQuery& query,
                         const KeychainAttributes& attributes) override {
    return fails("update", query) ? kStatus : real_.SecItemUpdate(query, attributes);
  }
  OSStatus SecItemAdd(const KeychainQuery& item, const KeychainAttributes& attributes,
                      bool synchronizable) override {
    return fails("add", item) ? kStatus : real_.SecItemAdd(item, attributes, synchronizable);
  }
  OSStatus SecItemDelete(const KeychainQuery& query) override {
    return fails("delete", query) ? kStatus : real_.SecItemDelete(query);
  }

 private:
  bool fails(const char* operation, const KeychainQuery& query) {
    calls_.push_back(std::string(operation) + ' ' + query.account);
    return fault_.strikes();
  }

  Keychain& real_;
  Fault& fault_;
  std::vector<std::string>& calls_;
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

/// Does what the real store does; while `held`, its answers wait until somebody gives them.
class HeldCredentialStore : public ASCredentialIdentityStore {
 public:
  /// The answers in the order in which they became ready; each may be given any number of times.
  struct Held {
    bool held = false;
    std::vector<std::shared_ptr<UniqueFunction<void()>>> answers;
  };

  HeldCredentialStore(ASCredentialIdentityStore& real, Held& held) : real_(real), held_(held) {}

  void getCredentialIdentityStoreState(StateCompletion completion) override {
    real_.getCredentialIdentityStoreState(holding(std::move(completion)));
  }
  void replaceCredentialIdentities(std::vector<ASPasswordCredentialIdentity> identities,
                                   Completion completion) override {
    real_.replaceCredentialIdentities(std::move(identities), holding(std::move(completion)));
  }
  void saveCredentialIdentityEntries(std::vector<ASPasskeyCredentialIdentity> identities,
                                     Completion completion) override {
    real_.saveCredentialIdentityEntries(std::move(identities), holding(std::move(completion)));
  }
  void removeAllCredentialIdentities(Completion completion) override {
    real_.removeAllCredentialIdentities(holding(std::move(completion)));
  }

 private:
  template <class... Answer>
  UniqueFunction<void(Answer...)> holding(UniqueFunction<void(Answer...)> completion) {
    return [this, completion = std::move(completion)](Answer... answer) mutable {
      if (!held_.held) return completion(std::move(answer)...);
      held_.answers.push_back(std::make_shared<UniqueFunction<void()>>(
          [completion = std::move(completion), ... answer = std::move(answer)]() mutable {
            completion(answer...);
          }));
    };
  }

  ASCredentialIdentityStore& real_;
  Held& held_;
};

}  // namespace norvane
