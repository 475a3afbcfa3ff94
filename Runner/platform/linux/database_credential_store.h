#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/credential_identity_store.h"
#include "platform/dispatch.h"
#include "platform/linux/credential_identity_database.h"

namespace norvane {

/// The credential identity store on a database of the host's own. It works and answers on a worker
/// thread, in the order of the calls.
class DatabaseCredentialStore : public ASCredentialIdentityStore {
 public:
  DatabaseCredentialStore(const std::string& dataDirectory, Dispatch& dispatch,
                          const ASCredentialIdentityStoreState& state);

  /// The person's side: what is registered, read by `look`.
  void inspect(const std::function<void(CredentialIdentityDatabase& database)>& look);

  void getCredentialIdentityStoreState(StateCompletion completion) override;
  void replaceCredentialIdentities(std::vector<ASPasswordCredentialIdentity> identities,
                                   Completion completion) override;
  void saveCredentialIdentityEntries(std::vector<ASPasskeyCredentialIdentity> identities,
                                     Completion completion) override;
  void removeAllCredentialIdentities(Completion completion) override;

 protected:
  using Operation = UniqueFunction<void(CredentialIdentityDatabase& database)>;

  // On the worker, at each operation's turn.
  virtual ASCredentialIdentityStoreState state() const { return state_; }
  virtual void run(Operation operation, Completion completion);

 private:
  void perform(Operation operation, Completion completion);

  const ASCredentialIdentityStoreState state_;
  std::mutex mutex_;
  CredentialIdentityDatabase database_;
  std::shared_ptr<SerialQueue> queue_;
};

}  // namespace norvane
