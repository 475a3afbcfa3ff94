#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/credential_identity_store.h"
#include "platform/dispatch.h"
#include "platform/headless/live_profile.h"
#include "platform/linux/credential_identity_database.h"

namespace norvane {

/// The credential identity store on a real database. It works and answers on a worker thread, in
/// the order of the calls, and succeeds or fails as the profile says.
class HeadlessCredentialStore : public ASCredentialIdentityStore {
 public:
  HeadlessCredentialStore(const std::string& dataDirectory, const LiveProfile& profile,
                          Dispatch& dispatch);

  /// The person's side: what is registered, read by `look`.
  void inspect(const std::function<void(CredentialIdentityDatabase& database)>& look);

  void getCredentialIdentityStoreState(StateCompletion completion) override;
  void replaceCredentialIdentities(std::vector<ASPasswordCredentialIdentity> identities,
                                   Completion completion) override;
  void saveCredentialIdentityEntries(std::vector<ASPasskeyCredentialIdentity> identities,
                                     Completion completion) override;
  void removeAllCredentialIdentities(Completion completion) override;

 private:
  using Operation = UniqueFunction<void(CredentialIdentityDatabase& database)>;
  void perform(Operation operation, Completion completion);

  const LiveProfile& profile_;
  std::mutex mutex_;
  CredentialIdentityDatabase database_;
  std::shared_ptr<SerialQueue> queue_;
};

}  // namespace norvane
