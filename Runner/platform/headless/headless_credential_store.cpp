#include "platform/headless/headless_credential_store.h"

#include <exception>
#include <utility>

namespace norvane {

HeadlessCredentialStore::HeadlessCredentialStore(const std::string& dataDirectory,
                                                 const LiveProfile& profile, Dispatch& dispatch)
    : profile_(profile),
      database_(dataDirectory + "/credential-identities.sqlite"),
      queue_(dispatch.makeSerialQueue()) {}

void HeadlessCredentialStore::inspect(
    const std::function<void(CredentialIdentityDatabase& database)>& look) {
  const std::lock_guard lock(mutex_);
  look(database_);
}

void HeadlessCredentialStore::getCredentialIdentityStoreState(StateCompletion completion) {
  queue_->async([this, completion = std::move(completion)]() mutable {
    const auto store = profile_.get(&Profile::credentialStore);
    completion({store.isEnabled, store.supportsIncrementalUpdates});
  });
}

void HeadlessCredentialStore::perform(Operation operation, Completion completion) {
  queue_->async(
      [this, operation = std::move(operation), completion = std::move(completion)]() mutable {
        const auto store = profile_.get(&Profile::credentialStore);
        std::optional<std::string> error = store.error;
        if (!error && store.success) {
          try {
            const std::lock_guard lock(mutex_);
            operation(database_);
          } catch (const std::exception& failure) {
            error = failure.what();
          }
        }
        completion(!error && store.success, error);
      });
}

void HeadlessCredentialStore::replaceCredentialIdentities(
    std::vector<ASPasswordCredentialIdentity> identities, Completion completion) {
  perform([identities =
               std::move(identities)](auto& database) { database.replacePasswords(identities); },
          std::move(completion));
}

void HeadlessCredentialStore::saveCredentialIdentityEntries(
    std::vector<ASPasskeyCredentialIdentity> identities, Completion completion) {
  perform(
      [identities = std::move(identities)](auto& database) { database.addPasskeys(identities); },
      std::move(completion));
}

void HeadlessCredentialStore::removeAllCredentialIdentities(Completion completion) {
  perform([](auto& database) { database.removeAll(); }, std::move(completion));
}

}  // namespace norvane
