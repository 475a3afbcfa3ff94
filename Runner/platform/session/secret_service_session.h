#pragma once

#include <memory>
#include <vector>

#include <libsecret/secret.h>

#include "platform/keychain.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/glib_handles.h"

namespace norvane {

/// One conversation with the Secret Service. Its calls are asynchronous and awaited in a main
/// context of its own: nothing else of the host runs meanwhile, and the deadline is kept on any
/// thread.
class SecretServiceSession {
 public:
  /// What any of the calls may throw.
  struct Failure {
    OSStatus status;
  };
  using ItemPtr = GObjectPtr<SecretItem>;

  explicit SecretServiceSession(GlibDispatch::Clock::time_point deadline);
  ~SecretServiceSession();
  SecretServiceSession(const SecretServiceSession&) = delete;

  /// Comes first. Fails when the keyring that new items go to is locked.
  void open();
  /// The items that `query` names; fails when one of them is in another keyring that is locked.
  std::vector<ItemPtr> find(const KeychainQuery& query);
  void update(const ItemPtr& item, const KeychainAttributes& attributes);
  void add(const KeychainQuery& item, const KeychainAttributes& attributes, bool synchronizable);
  void remove(const ItemPtr& item);

 private:
  using Result = GObjectPtr<GAsyncResult>;

  template <class Begin>
  Result await(Begin begin);
  bool isLocked() const;
  bool isInCollection(const ItemPtr& item) const;
  void create(GHashTable* attributes, SecretValue* secret);
  static GType serviceType();
  GVariantPtr runPrompt(SecretPrompt* prompt, const GVariantType* type);

  std::unique_ptr<GMainContext, Deleter<g_main_context_unref>> context_;
  GObjectPtr<GCancellable> cancellable_;
  std::unique_ptr<GSource, Deleter<g_source_unref>> timer_;
  GObjectPtr<SecretService> service_;
  GObjectPtr<SecretCollection> collection_;  // where new items go, if there is one
  GVariantPtr completed_;                    // what a prompt has said at its end
};

}  // namespace norvane
