#include "platform/linux/database_credential_store.h"

#include <exception>
#include <utility>

#include "base/utf8.h"

namespace norvane {

DatabaseCredentialStore::DatabaseCredentialStore(const std::string& dataDirectory,
                                                 Dispatch& dispatch,
                                                 const ASCredentialIdentityStoreState& state)
    : state_(state),
      database_(dataDirectory + "/credential-identities.sqlite"),
      queue_(dispatch.makeSerialQueue()) {}

void DatabaseCredentialStore::inspect(
    const std::function<void(CredentialIdentityDatabase& database)>& look) {
  const std::lock_guard lock(mutex_);
  look(database_);
}

void DatabaseCredentialStore::getCredentialIdentityStoreState(StateCompletion completion) {
  queue_->async([this, completion = std::move(completion)]() mutable { completion(state()); });
}

void DatabaseCredentialStore::perform(Operation operation, Completion completion) {
  queue_->async(
      [this, operation = std::move(operation), completion = std::move(completion)]() mutable {
        run(std::move(operation), std::move(completion));
      });
}

void DatabaseCredentialStore::run(Operation operation, Completion completion) {
  std::optional<std::string> error;
  try {
    const std::lock_guard lock(mutex_);
    operation(database_);
  } catch (const std::exception& failure) {
    error = utf8Of(failure.what());
  }
  completion(!error, error);
}

void DatabaseCredentialStore::replaceCredentialIdentities(
    std::vector<ASPasswordCredentialIdentity> identities, Completion completion) {
  perform([identities =
               std::move(identities)](auto& database) { database.replacePasswords(identities); },
          std::move(completion));
}

void DatabaseCredentialStore::saveCredentialIdentityEntries(
    std::vector<ASPasskeyCredentialIdentity> identities, Completion completion) {
  perform(
      [identities = std::move(identities)](auto& database) { database.addPasskeys(identities); },
      std::move(completion));
}

void DatabaseCredentialStore::removeAllCredentialIdentities(Completion completion) {
  perform([](auto& database) { database.removeAll(); }, std::move(completion));
}

}  // namespace norvane
