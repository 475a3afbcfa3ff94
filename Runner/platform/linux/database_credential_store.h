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
  /// What the store does; a text in `error`, or no success, makes it refuse without a change.
  struct Conduct {
    ASCredentialIdentityStoreState state;
    bool success = true;
    std::optional<std::string> error;
  };

  /// `conduct` is asked at each operation, on a worker thread.
  DatabaseCredentialStore(const std::string& dataDirectory, Dispatch& dispatch,
                          std::function<Conduct()> conduct);

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

  const std::function<Conduct()> conduct_;
  std::mutex mutex_;
  CredentialIdentityDatabase database_;
  std::shared_ptr<SerialQueue> queue_;
};

}  // namespace norvane
