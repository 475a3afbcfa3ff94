#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/unique_function.h"

namespace norvane {

struct ASCredentialServiceIdentifier {
  enum class Type { domain, URL };
  std::string identifier;
  Type type = Type::domain;
};

/// A login that the system may offer. No secret.
struct ASPasswordCredentialIdentity {
  ASCredentialServiceIdentifier serviceIdentifier;
  std::string user;
  std::string recordIdentifier;
};

/// A passkey that the system may offer. No secret.
struct ASPasskeyCredentialIdentity {
  std::string relyingPartyIdentifier;
  std::string userName;
  std::vector<std::uint8_t> credentialID;
  std::vector<std::uint8_t> userHandle;
  std::string recordIdentifier;
};

struct ASCredentialIdentityStoreState {
  bool isEnabled = false;
  bool supportsIncrementalUpdates = false;
};

/// The identities of this application that the system's AutoFill knows. Any thread. Each call
/// returns without waiting and calls its completion once, later, on a thread of the store's
/// choosing; they take place in their order. A quit lets completions go uncalled. A change happens
/// whole or not at all.
class ASCredentialIdentityStore {
 public:
  using StateCompletion = UniqueFunction<void(ASCredentialIdentityStoreState state)>;
  /// `error` is the store's localized description of what failed, in UTF-8; a refusal may come
  /// without one.
  using Completion = UniqueFunction<void(bool success, std::optional<std::string> error)>;

  virtual ~ASCredentialIdentityStore() = default;

  /// The state as it is when the calls before have taken place.
  virtual void getCredentialIdentityStoreState(StateCompletion completion) = 0;
  /// The password identities become `identities` and no others; passkeys stay. None is fine.
  virtual void replaceCredentialIdentities(std::vector<ASPasswordCredentialIdentity> identities,
                                           Completion completion) = 0;
  /// Adds to those that are registered, and takes the place of none.
  virtual void saveCredentialIdentityEntries(std::vector<ASPasskeyCredentialIdentity> identities,
                                             Completion completion) = 0;
  /// Passwords and passkeys; that there are none is success.
  virtual void removeAllCredentialIdentities(Completion completion) = 0;
};

}  // namespace norvane
