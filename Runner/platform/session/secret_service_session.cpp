#include "platform/session/secret_service_session.h"

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <string>

namespace norvane {
namespace {

using Clock = GlibDispatch::Clock;
using Failure = SecretServiceSession::Failure;
using AttributesPtr = std::unique_ptr<GHashTable, Deleter<g_hash_table_unref>>;
using SecretPtr = std::unique_ptr<SecretValue, Deleter<secret_value_unref>>;

constexpr const char* kSession = "norvane-session";  // of a service: whose it is

constexpr const char* kService = "service";
constexpr const char* kAccount = "account";
constexpr const char* kAccessGroup = "access-group";
constexpr const char* kAccessible = "accessible";
constexpr const char* kSynchronizable = "synchronizable";

// Texts alone: a call with attributes that do not fit is dropped by the library without an answer.
const SecretSchema kSchema = {"cn.kestrio.norvane.Keychain",
                              SECRET_SCHEMA_NONE,
                              {{kService, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kAccount, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kAccessGroup, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kAccessible, SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {kSynchronizable, SECRET_SCHEMA_ATTRIBUTE_STRING}}};

void set(GHashTable* attributes, const char* name, const std::string& value) {
  g_hash_table_replace(attributes, g_strdup(name), g_strdup(value.c_str()));
}

const char* valueOf(GHashTable* attributes, const char* name) {
  return static_cast<const char*>(g_hash_table_lookup(attributes, name));
}

AttributesPtr noAttributes() {
  return AttributesPtr(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
}

AttributesPtr attributesOf(const KeychainQuery& query) {
  AttributesPtr attributes = noAttributes();
  set(attributes.get(), kService, query.service);
  set(attributes.get(), kAccount, query.account);
  if (query.accessGroup) set(attributes.get(), kAccessGroup, *query.accessGroup);
  return attributes;
}

/// Without those that a keyring adds of its own.
AttributesPtr attributesOf(const SecretServiceSession::ItemPtr& item) {
  const AttributesPtr all(secret_item_get_attributes(item.get()));
  AttributesPtr attributes = noAttributes();
  for (const char* name : {kService, kAccount, kAccessGroup, kAccessible, kSynchronizable}) {
    if (const char* value = valueOf(all.get(), name)) set(attributes.get(), name, value);
  }
  return attributes;
}

// The value lies in locked memory, where the system has any left, and is wiped when it goes.
SecretPtr secretOf(std::span<const std::uint8_t> value) {
  return SecretPtr(secret_value_new(reinterpret_cast<const char*>(value.data()),
                                    static_cast<gssize>(value.size()), "application/octet-stream"));
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

template <class Finish, class... Object>
auto finish(Finish function, const GObjectPtr<GAsyncResult>& result, Object*... object) {
  GError* error = nullptr;
  const auto value = function(object..., result.get(), &error);
  if (error) throw Failure{statusOf(*GErrorPtr(error))};
  return value;
}

}  // namespace

template <class Begin>
SecretServiceSession::Result SecretServiceSession::await(Begin begin) {
  GAsyncResult* result = nullptr;
  const GAsyncReadyCallback done = [](GObject*, GAsyncResult* arrived, gpointer out) {
    *static_cast<gpointer*>(out) = g_object_ref(arrived);
  };
  begin(cancellable_.get(), done, static_cast<gpointer>(&result));
  while (!result) g_main_context_iteration(context_.get(), TRUE);
  return Result(result);
}

SecretServiceSession::SecretServiceSession(Clock::time_point deadline)
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

SecretServiceSession::~SecretServiceSession() {
  collection_.reset();
  service_.reset();
  g_source_destroy(timer_.get());
  // What the service's objects leave for later is freed in the context that they were made in.
  while (g_main_context_iteration(context_.get(), FALSE)) {
  }
  g_main_context_pop_thread_default(context_.get());
}

void SecretServiceSession::open() {
  const auto connected = await([&](auto... done) { g_bus_get(G_BUS_TYPE_SESSION, done...); });
  const GObjectPtr<GDBusConnection> bus(finish(g_bus_get_finish, connected));
  g_dbus_connection_set_exit_on_close(bus.get(), FALSE);  // its end is not the process's
  // Over a connection that has ended, the service's library would complain to standard error; that
  // it has not is known from an answer, not from what has been noticed so far.
  const auto answered = await([&](auto... done) {
    g_dbus_connection_call(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, done...);
  });
  const GVariantPtr nothing(finish(g_dbus_connection_call_finish, answered, bus.get()));
  const auto opened = await([&](auto... done) {
    secret_service_open(serviceType(), nullptr, SECRET_SERVICE_NONE, done...);
  });
  service_.reset(finish(secret_service_open_finish, opened));
  g_object_set_data(G_OBJECT(service_.get()), kSession, this);
  const auto named = await([&](auto... done) {
    secret_collection_for_alias(service_.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE,
                                done...);
  });
  collection_.reset(finish(secret_collection_for_alias_finish, named));
  // Some keyrings ask the person for the password as soon as anybody looks for an item.
  if (isLocked()) throw Failure{errSecInteractionNotAllowed};
}

std::vector<SecretServiceSession::ItemPtr> SecretServiceSession::find(const KeychainQuery& query) {
  const AttributesPtr attributes = attributesOf(query);
  const auto result = await([&](auto... done) {
    secret_service_search(service_.get(), &kSchema, attributes.get(), SECRET_SEARCH_ALL, done...);
  });
  std::vector<ItemPtr> items;
  GList* found = finish(secret_service_search_finish, result, service_.get());
  for (const GList* item = found; item; item = item->next) {
    items.emplace_back(SECRET_ITEM(item->data));
  }
  g_list_free(found);
  const bool locked = std::ranges::any_of(items, [this](const ItemPtr& item) {
    return secret_item_get_locked(item.get()) && !isInCollection(item);
  });
  if (locked) throw Failure{errSecInteractionNotAllowed};
  return items;
}

void SecretServiceSession::update(const ItemPtr& item, const KeychainAttributes& attributes) {
  const SecretPtr secret = secretOf(attributes.valueData);
  const AttributesPtr kept = attributesOf(item);
  const char* accessible = valueOf(kept.get(), kAccessible);
  if (!secret_item_get_locked(item.get()) && accessible && attributes.accessible == accessible) {
    const auto result =
        await([&](auto... done) { secret_item_set_secret(item.get(), secret.get(), done...); });
    finish(secret_item_set_secret_finish, result, item.get());
    return;
  }
  // Made anew when more than the value changes, and when the item is locked by itself in an open
  // keyring: KeePassXC lets nobody write to it before the person has allowed that, but delete it.
  set(kept.get(), kAccessible, attributes.accessible);
  remove(item);
  create(kept.get(), secret.get());
}

void SecretServiceSession::add(const KeychainQuery& item, const KeychainAttributes& attributes,
                               bool synchronizable) {
  const AttributesPtr all = attributesOf(item);
  set(all.get(), kAccessible, attributes.accessible);
  set(all.get(), kSynchronizable, synchronizable ? "true" : "false");
  create(all.get(), secretOf(attributes.valueData).get());
}

void SecretServiceSession::create(GHashTable* attributes, SecretValue* secret) {
  if (!collection_) throw Failure{errSecInteractionNotAllowed};  // to make one takes a dialog
  const std::string label = std::string("Norvane: ") + valueOf(attributes, kAccount);
  const auto result = await([&](auto... done) {
    secret_item_create(collection_.get(), &kSchema, attributes, label.c_str(), secret,
                       SECRET_ITEM_CREATE_NONE, done...);
  });
  const ItemPtr created(finish(secret_item_create_finish, result));
}

void SecretServiceSession::remove(const ItemPtr& item) {
  const auto result = await([&](auto... done) { secret_item_delete(item.get(), done...); });
  finish(secret_item_delete_finish, result, item.get());
}

bool SecretServiceSession::isLocked() const {
  return collection_ && secret_collection_get_locked(collection_.get());
}

bool SecretServiceSession::isInCollection(const ItemPtr& item) const {
  if (!collection_) return false;
  const std::string path = g_dbus_proxy_get_object_path(G_DBUS_PROXY(collection_.get()));
  return g_str_has_prefix(g_dbus_proxy_get_object_path(G_DBUS_PROXY(item.get())),
                          (path + '/').c_str());
}

/// A service whose prompts are the session's.
GType SecretServiceSession::serviceType() {
  static constexpr auto kPrompt = [](SecretService* service, SecretPrompt* prompt,
                                     const GVariantType* type, GCancellable* /*the session's*/,
                                     GAsyncReadyCallback callback, gpointer data) {
    auto* session =
        static_cast<SecretServiceSession*>(g_object_get_data(G_OBJECT(service), kSession));
    const GObjectPtr<GTask> task(g_task_new(service, nullptr, callback, data));
    try {
      g_task_return_pointer(task.get(), session->runPrompt(prompt, type).release(),
                            [](gpointer value) { g_variant_unref(static_cast<GVariant*>(value)); });
    } catch (const Failure&) {
      g_dbus_proxy_call(G_DBUS_PROXY(prompt), "Dismiss", nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                        nullptr, nullptr, nullptr);
      g_task_return_new_error(task.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED,
                              "the keyring asks the person");
    }
  };
  static const GType type = g_type_register_static_simple(
      SECRET_TYPE_SERVICE, "NorvaneSecretService", sizeof(SecretServiceClass),
      [](gpointer serviceClass, gpointer) {
        auto* functions = static_cast<SecretServiceClass*>(serviceClass);
        functions->prompt_async = kPrompt;
        functions->prompt_finish = [](SecretService*, GAsyncResult* result, GError** error) {
          return static_cast<GVariant*>(g_task_propagate_pointer(G_TASK(result), error));
        };
      },
      sizeof(SecretService), nullptr, G_TYPE_FLAG_NONE);
  return type;
}

/// What a prompt gives that needs no person: KeePassXC answers each change with one. Where a
/// keyring has been locked meanwhile it would be a dialog that comes out of nowhere.
GVariantPtr SecretServiceSession::runPrompt(SecretPrompt* prompt, const GVariantType* type) {
  if (isLocked()) throw Failure{errSecInteractionNotAllowed};
  completed_.reset();
  const auto heard = +[](GDBusProxy*, const char*, const char* signal, GVariant* said,
                         SecretServiceSession* session) {
    if (g_str_equal(signal, "Completed")) session->completed_.reset(g_variant_ref(said));
  };
  g_signal_connect(prompt, "g-signal", G_CALLBACK(heard), this);
  const auto begun = await([&](auto... done) {
    g_dbus_proxy_call(G_DBUS_PROXY(prompt), "Prompt", g_variant_new("(s)", ""),
                      G_DBUS_CALL_FLAGS_NONE, -1, done...);
  });
  const GVariantPtr nothing(finish(g_dbus_proxy_call_finish, begun, G_DBUS_PROXY(prompt)));
  while (!completed_ && !g_cancellable_is_cancelled(cancellable_.get())) {
    g_main_context_iteration(context_.get(), TRUE);
  }
  gboolean dismissed = TRUE;
  GVariant* given = nullptr;
  if (completed_ && g_variant_is_of_type(completed_.get(), G_VARIANT_TYPE("(bv)"))) {
    g_variant_get(completed_.get(), "(bv)", &dismissed, &given);
  }
  GVariantPtr value(given);
  if (dismissed || (type && !g_variant_is_of_type(given, type))) {
    throw Failure{errSecInteractionNotAllowed};
  }
  return value;
}

}  // namespace norvane
