#include "platform/gtk/secret_service_keychain.h"

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <vector>

#include <libsecret/secret.h>

#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kMainThreadLimit = std::chrono::seconds(2);
constexpr auto kWorkerLimit = std::chrono::seconds(10);
constexpr auto kLeftAlone = std::chrono::seconds(5);

using AttributesPtr = std::unique_ptr<GHashTable, Deleter<g_hash_table_unref>>;
using SecretPtr = std::unique_ptr<SecretValue, Deleter<secret_value_unref>>;
using ItemPtr = GObjectPtr<SecretItem>;

constexpr const char* kService = "service";
constexpr const char* kAccount = "account";
constexpr const char* kAccessGroup = "access-group";
constexpr const char* kAccessible = "accessible";
constexpr const char* kSynchronizable = "synchronizable";

const SecretSchema kSchema = {"cn.kestrio.norvane.Keychain",
                              SECRET_SCHEMA_NONE,
                              {{kService, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kAccount, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kAccessGroup, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kAccessible, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kSynchronizable, SECRET_SCHEMA_ATTRIBUTE_BOOLEAN}}};

void set(GHashTable* attributes, const char* name, const std::string& value) {
  g_hash_table_replace(attributes, g_strdup(name), g_strdup(value.c_str()));
}

AttributesPtr attributesOf(const KeychainQuery& query) {
  AttributesPtr attributes(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
  set(attributes.get(), kService, query.service);
  set(attributes.get(), kAccount, query.account);
  if (query.accessGroup) set(attributes.get(), kAccessGroup, *query.accessGroup);
  return attributes;
}

// The value lies in locked memory, where the system has any left, and is wiped when it goes.
SecretPtr secretOf(std::span<const std::uint8_t> value) {
  return SecretPtr(secret_value_new(reinterpret_cast<const char*>(value.data()),
                                    static_cast<gssize>(value.size()), "application/octet-stream"));
}

// A service that refuses each prompt instead of showing it: the host asks in the background, where
// a password dialog would come out of nowhere and hold the call until it is answered.
void refusePrompt(SecretService* service, SecretPrompt* prompt, const GVariantType*,
                  GCancellable* cancellable, GAsyncReadyCallback callback, gpointer data) {
  g_dbus_proxy_call(G_DBUS_PROXY(prompt), "Dismiss", nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                    nullptr, nullptr);
  const GObjectPtr<GTask> task(g_task_new(service, cancellable, callback, data));
  g_task_return_new_error(task.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED,
                          "the keyring is locked");
}

GType promptlessServiceType() {
  static const GType type = g_type_register_static_simple(
      SECRET_TYPE_SERVICE, "NorvanePromptlessSecretService", sizeof(SecretServiceClass),
      [](gpointer serviceClass, gpointer) {
        auto* functions = static_cast<SecretServiceClass*>(serviceClass);
        functions->prompt_async = refusePrompt;
        functions->prompt_finish = [](SecretService*, GAsyncResult* result, GError** error) {
          return static_cast<GVariant*>(g_task_propagate_pointer(G_TASK(result), error));
        };
      },
      sizeof(SecretService), nullptr, G_TYPE_FLAG_NONE);
  return type;
}

OSStatus statusOf(const GError& error) {
  const auto is = [&](GQuark domain, std::initializer_list<int> codes) {
    return error.domain == domain && std::ranges::find(codes, error.code) != codes.end();
  };
  // A service that has no display for its password dialog has no object where it names a prompt.
  if (is(SECRET_ERROR, {SECRET_ERROR_IS_LOCKED, SECRET_ERROR_NO_SUCH_OBJECT}) ||
      is(G_IO_ERROR, {G_IO_ERROR_CANCELLED, G_IO_ERROR_TIMED_OUT}) ||
      is(G_DBUS_ERROR, {G_DBUS_ERROR_UNKNOWN_OBJECT, G_DBUS_ERROR_UNKNOWN_METHOD,
                        G_DBUS_ERROR_TIMEOUT, G_DBUS_ERROR_TIMED_OUT})) {
    return errSecInteractionNotAllowed;
  }
  const bool notStarted = error.domain == G_DBUS_ERROR &&
                          error.code >= G_DBUS_ERROR_SPAWN_EXEC_FAILED &&
                          error.code <= G_DBUS_ERROR_SPAWN_NO_MEMORY;
  const bool noBus = error.domain == G_IO_ERROR && error.code != G_IO_ERROR_DBUS_ERROR;
  if (notStarted || noBus ||
      is(G_DBUS_ERROR,
         {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER, G_DBUS_ERROR_NO_REPLY,
          G_DBUS_ERROR_NO_SERVER, G_DBUS_ERROR_NO_NETWORK, G_DBUS_ERROR_DISCONNECTED})) {
    return errSecNotAvailable;
  }
  return errSecIO;
}

/// What a call of the service failed with.
struct Failure {
  OSStatus status;
};

}  // namespace

/// One conversation with the service. Its calls are asynchronous and awaited in a main context of
/// its own: nothing else of the host runs meanwhile, and the deadline is kept on any thread.
class SecretServiceKeychain::Session {
  using Result = GObjectPtr<GAsyncResult>;

  template <class Begin>
  Result await(Begin begin) {
    GAsyncResult* result = nullptr;
    const GAsyncReadyCallback done = [](GObject*, GAsyncResult* arrived, gpointer out) {
      *static_cast<gpointer*>(out) = g_object_ref(arrived);
    };
    begin(cancellable_.get(), done, static_cast<gpointer>(&result));
    while (!result) g_main_context_iteration(context_.get(), TRUE);
    return Result(result);
  }

  template <class Finish, class... Object>
  static auto finish(Finish function, const Result& result, Object*... object) {
    GError* error = nullptr;
    const auto value = function(object..., result.get(), &error);
    if (error) throw Failure{statusOf(*GErrorPtr(error))};
    return value;
  }

 public:
  explicit Session(Clock::time_point deadline)
      : context_(g_main_context_new()), cancellable_(g_cancellable_new()) {
    g_main_context_push_thread_default(context_.get());
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    timer_.reset(g_timeout_source_new(static_cast<guint>(std::max<long>(0, left.count()))));
    g_source_set_callback(
        timer_.get(),
        [](gpointer cancellable) -> gboolean {
          g_cancellable_cancel(static_cast<GCancellable*>(cancellable));
          return G_SOURCE_REMOVE;
        },
        cancellable_.get(), nullptr);
    g_source_attach(timer_.get(), context_.get());
  }
  ~Session() {
    service_.reset();
    g_source_destroy(timer_.get());
    // What the service's objects leave for later is freed in the context that they were made in.
    while (g_main_context_iteration(context_.get(), FALSE)) {
    }
    g_main_context_pop_thread_default(context_.get());
  }
  Session(const Session&) = delete;

  void open() {
    const auto connected = await([&](auto... done) { g_bus_get(G_BUS_TYPE_SESSION, done...); });
    const GObjectPtr<GDBusConnection> bus(finish(g_bus_get_finish, connected));
    // Its end is not the process's. Asked of one that has ended, the service's library complains to
    // standard error.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    if (g_dbus_connection_is_closed(bus.get())) throw Failure{errSecNotAvailable};
    const auto result = await([&](auto... done) {
      secret_service_open(promptlessServiceType(), nullptr, SECRET_SERVICE_NONE, done...);
    });
    service_.reset(finish(secret_service_open_finish, result));
  }

  /// The items that the attributes name; throws Failure when one of them is locked, or there is
  /// none and a locked keyring might hide some.
  std::vector<ItemPtr> find(GHashTable* attributes) {
    const auto result = await([&](auto... done) {
      secret_service_search(service_.get(), &kSchema, attributes, SECRET_SEARCH_ALL, done...);
    });
    std::vector<ItemPtr> items;
    GList* found = finish(secret_service_search_finish, result, service_.get());
    for (const GList* item = found; item; item = item->next) {
      items.emplace_back(SECRET_ITEM(item->data));
    }
    g_list_free(found);
    const bool locked =
        items.empty() ? isDefaultLocked() : std::ranges::any_of(items, [](const ItemPtr& item) {
          return secret_item_get_locked(item.get());
        });
    if (locked) throw Failure{errSecInteractionNotAllowed};
    return items;
  }

  void setSecret(const ItemPtr& item, SecretValue* secret) {
    const auto result =
        await([&](auto... done) { secret_item_set_secret(item.get(), secret, done...); });
    finish(secret_item_set_secret_finish, result, item.get());
  }

  /// Changes one attribute and keeps the others, such as a group that the query did not name.
  void setAttribute(const ItemPtr& item, const char* name, const std::string& value) {
    const AttributesPtr attributes(secret_item_get_attributes(item.get()));
    set(attributes.get(), name, value);
    const auto result = await([&](auto... done) {
      secret_item_set_attributes(item.get(), &kSchema, attributes.get(), done...);
    });
    finish(secret_item_set_attributes_finish, result, item.get());
  }

  void store(GHashTable* attributes, const std::string& label, SecretValue* secret) {
    const auto result = await([&](auto... done) {
      secret_service_store(service_.get(), &kSchema, attributes, SECRET_COLLECTION_DEFAULT,
                           label.c_str(), secret, done...);
    });
    finish(secret_service_store_finish, result, service_.get());
  }

  void remove(const ItemPtr& item) {
    const auto result = await([&](auto... done) { secret_item_delete(item.get(), done...); });
    finish(secret_item_delete_finish, result, item.get());
  }

 private:
  bool isDefaultLocked() {
    const auto result = await([&](auto... done) {
      secret_collection_for_alias(service_.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE,
                                  done...);
    });
    const GObjectPtr<SecretCollection> collection(
        finish(secret_collection_for_alias_finish, result));
    return collection && secret_collection_get_locked(collection.get());
  }

  std::unique_ptr<GMainContext, Deleter<g_main_context_unref>> context_;
  GObjectPtr<GCancellable> cancellable_;
  std::unique_ptr<GSource, Deleter<g_source_unref>> timer_;
  GObjectPtr<SecretService> service_;
};

OSStatus SecretServiceKeychain::answer(const KeychainQuery& query,
                                       const std::function<OSStatus(Session&)>& call) {
  // D-Bus carries no other texts.
  for (const std::string* text :
       {&query.service, &query.account, query.accessGroup ? &*query.accessGroup : &query.account}) {
    if (!g_utf8_validate_len(text->data(), text->size(), nullptr)) return errSecIO;
  }
  const auto deadline = Clock::now() + (dispatch_.isMainThread() ? kMainThreadLimit : kWorkerLimit);
  const std::unique_lock lock(mutex_, deadline);
  if (!lock || Clock::now() < leftAloneUntil_) return errSecInteractionNotAllowed;
  try {
    Session session(deadline);
    session.open();
    return call(session);
  } catch (const Failure& failure) {
    if (Clock::now() >= deadline) leftAloneUntil_ = Clock::now() + kLeftAlone;
    return failure.status;
  }
}

OSStatus SecretServiceKeychain::SecItemUpdate(const KeychainQuery& query,
                                              const KeychainAttributes& attributes) {
  return answer(query, [&](Session& session) {
    const auto items = session.find(attributesOf(query).get());
    const SecretPtr secret = secretOf(attributes.valueData);
    for (const auto& item : items) {
      session.setSecret(item, secret.get());
      session.setAttribute(item, kAccessible, attributes.accessible);
    }
    return items.empty() ? errSecItemNotFound : errSecSuccess;
  });
}

OSStatus SecretServiceKeychain::SecItemAdd(const KeychainQuery& item,
                                           const KeychainAttributes& attributes,
                                           bool synchronizable) {
  return answer(item, [&](Session& session) {
    const AttributesPtr all = attributesOf(item);
    if (!session.find(all.get()).empty()) return errSecDuplicateItem;
    set(all.get(), kAccessible, attributes.accessible);
    set(all.get(), kSynchronizable, synchronizable ? "true" : "false");
    session.store(all.get(), "Norvane: " + item.account, secretOf(attributes.valueData).get());
    return errSecSuccess;
  });
}

OSStatus SecretServiceKeychain::SecItemDelete(const KeychainQuery& query) {
  return answer(query, [&](Session& session) {
    const auto items = session.find(attributesOf(query).get());
    for (const auto& item : items) session.remove(item);
    return items.empty() ? errSecItemNotFound : errSecSuccess;
  });
}

}  // namespace norvane
