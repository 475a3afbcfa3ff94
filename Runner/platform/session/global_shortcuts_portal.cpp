#include "platform/session/global_shortcuts_portal.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>
#include <utility>

#include <bus_interfaces.h>

#include "platform/linux/hotkey_press.h"
#include "platform/log.h"
#include "platform/session/key_codes.h"
#include "platform/session/session.h"

namespace norvane {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr auto kPatience = std::chrono::seconds(2);
// Always the same: desktops list the shortcuts under it, and know them again by it.
constexpr const char* kSessionToken = "norvane";
constexpr EventHotKeyRef kHotKeyRef = 1;  // there is one at a time

using ContextPtr = std::unique_ptr<GMainContext, Deleter<g_main_context_unref>>;
using PusherPtr = std::unique_ptr<GMainContextPusher, Deleter<g_main_context_pusher_free>>;

constexpr auto kForSignals =
    static_cast<GDBusProxyFlags>(G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES |
                                 G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START_AT_CONSTRUCTION);
constexpr auto kForCalls =
    static_cast<GDBusProxyFlags>(kForSignals | G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS);

/// What the portal said to a request.
struct Answer {
  std::optional<guint32> response;  ///< 0 when it agrees; none while there is no answer
  GVariantPtr results;              ///< of a{sv}
  std::string error;                ///< why there will be none
};

/// Where the portal has what this process gave the token.
std::string ownPath(GDBusConnection* bus, const char* kind, const std::string& token) {
  std::string sender = g_dbus_connection_get_unique_name(bus) + 1;  // without the colon
  std::ranges::replace(sender, '.', '_');
  return std::string(kPath) + "/" + kind + "/" + sender + "/" + token;
}

std::string newToken() {
  static int number = 0;
  return "norvane" + std::to_string(++number);
}

/// The answer to one request to the portal, which comes as a signal of an object of its own, in the
/// thread's context.
class Request {
 public:
  Request(GDBusConnection* bus, GCancellable* cancellable)
      : cancellable_(cancellable),
        token_(newToken()),
        signals_(bus_portal_request_proxy_new_sync(bus, kForSignals, kPortal,
                                                   ownPath(bus, "request", token_).c_str(),
                                                   cancellable, nullptr)) {
    if (signals_) g_signal_connect(signals_.get(), "response", G_CALLBACK(heard), &answer_);
  }
  Request(const Request&) = delete;

  /// Makes the call, with these options and the request's own, and waits until it is answered or
  /// cancelled.
  template <class Call>
  Answer make(const char* method, GVariantBuilder& options, Call call) {
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token_.c_str()));
    GError* error = nullptr;
    const bool called = call(g_variant_builder_end(&options), &error);
    const GErrorPtr failure(error);
    if (!called) {
      answer_.error = std::string(method) + " failed: " + error->message;
      return std::move(answer_);
    }
    GMainContext* context = g_main_context_get_thread_default();
    GSource* cancelled = g_cancellable_source_new(cancellable_);
    const auto wake = +[](GCancellable*, gpointer) -> gboolean { return G_SOURCE_CONTINUE; };
    g_source_set_callback(cancelled, G_SOURCE_FUNC(wake), nullptr, nullptr);
    g_source_attach(cancelled, context);
    while (!answer_.response && !g_cancellable_is_cancelled(cancellable_)) {
      g_main_context_iteration(context, TRUE);
    }
    g_source_destroy(cancelled);
    g_source_unref(cancelled);
    if (answer_.response.value_or(0) != 0) {
      answer_.error =
          std::string(method) + " was refused (" + std::to_string(*answer_.response) + ")";
    }
    return std::move(answer_);
  }

 private:
  static void heard(BusPortalRequest*, guint response, GVariant* results, Answer* answer) {
    *answer = {response, GVariantPtr(g_variant_ref(results)), {}};
  }

  GCancellable* cancellable_;
  std::string token_;
  Answer answer_;
  GObjectPtr<BusPortalRequest> signals_;
};

/// As the desktops write shortcuts; empty when this one cannot be written.
std::string triggerText(std::uint32_t keyCode, std::uint32_t modifiers) {
  const PhysicalKey* key = physicalKey(keyCode);
  constexpr std::pair<std::uint32_t, const char*> kNames[] = {
      {controlKey, "CTRL+"}, {optionKey, "ALT+"}, {shiftKey, "SHIFT+"}, {cmdKey, "LOGO+"}};
  std::string text;
  for (const auto& [modifier, name] : kNames) {
    if (modifiers & modifier) text += name;
    modifiers &= ~modifier;
  }
  return key && modifiers == 0 ? text.append(key->symbol) : "";
}

GVariantBuilder builder(const char* type) {
  GVariantBuilder made;
  g_variant_builder_init(&made, G_VARIANT_TYPE(type));
  return made;
}

/// The shortcuts as both calls take them. Named by its keys: the desktop remembers what it did with
/// a name, and would not look at the keys of another choice.
GVariant* shortcutsOf(const std::string& trigger) {
  auto properties = builder("a{sv}");
  g_variant_builder_add(&properties, "{sv}", "description",
                        g_variant_new_string("Norvane — Quick Access"));
  g_variant_builder_add(&properties, "{sv}", "preferred_trigger",
                        g_variant_new_string(trigger.c_str()));
  auto shortcuts = builder("a(sa{sv})");
  g_variant_builder_add(&shortcuts, "(s@a{sv})", trigger.c_str(),
                        g_variant_builder_end(&properties));
  return g_variant_builder_end(&shortcuts);
}

/// What the desktop says of the shortcut; null when it does not name it.
GVariantPtr listed(const Answer& answer, const std::string& shortcut) {
  const GVariantPtr shortcuts(
      g_variant_lookup_value(answer.results.get(), "shortcuts", G_VARIANT_TYPE("a(sa{sv})")));
  if (!shortcuts) return nullptr;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, shortcuts.get());
  const char* id = nullptr;
  GVariant* properties = nullptr;
  while (g_variant_iter_next(&iterator, "(&s@a{sv})", &id, &properties)) {
    GVariantPtr owner(properties);
    if (shortcut == id) return owner;
  }
  return nullptr;
}

void closeSession(GDBusConnection* bus, const std::string& path, GCancellable* cancellable) {
  const GObjectPtr<BusPortalSession> session(bus_portal_session_proxy_new_sync(
      bus, kForCalls, kPortal, path.c_str(), cancellable, nullptr));
  if (!session) return;
  bus_portal_session_call_close_sync(session.get(), G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                     static_cast<int>(std::chrono::milliseconds(kPatience).count()),
                                     cancellable, nullptr);
}

}  // namespace

/// One combination asked for, on a thread of its own: a portal that has yet to start, and a person,
/// take their time.
class GlobalShortcutsPortal::Attempt {
 public:
  struct Outcome {
    OSStatus status = eventInternalErr;
    bool hasAsked = false;  ///< the person may have been shown something
    std::string session;    ///< the portal's path of it; empty without one
    std::string message;
  };

  /// Closes the session `before`; `finished` is called on the attempt's thread.
  Attempt(GDBusConnection* bus, std::string trigger, std::string before,
          std::function<void()> finished)
      : bus_(bus),
        trigger_(std::move(trigger)),
        thread_([this, before = std::move(before), finished = std::move(finished)] {
          // A context of its own, so that the wait for the portal runs nothing else.
          const ContextPtr context(g_main_context_new());
          const PusherPtr pushed(g_main_context_pusher_new(context.get()));
          if (!before.empty()) closeSession(bus_, before, cancellable_.get());
          promise_.set_value(run());
          finished();
        }) {}
  /// Cancels it.
  ~Attempt() {
    g_cancellable_cancel(cancellable_.get());
    thread_.join();
  }
  Attempt(const Attempt&) = delete;

  /// To be taken once.
  std::future<Outcome>& outcome() { return outcome_; }

 private:
  Outcome run() {
    Outcome outcome;
    GError* error = nullptr;
    const GObjectPtr<BusGlobalShortcuts> portal(bus_global_shortcuts_proxy_new_sync(
        bus_, kForCalls, kPortal, kPath, cancellable_.get(), &error));
    if (const GErrorPtr failure(error); failure) {
      outcome.message = failure->message;
      return outcome;
    }
    introduce();
    auto sessionOptions = builder("a{sv}");
    g_variant_builder_add(&sessionOptions, "{sv}", "session_handle_token",
                          g_variant_new_string(kSessionToken));
    // KDE's portal takes them here; binding opens its settings.
    g_variant_builder_add(&sessionOptions, "{sv}", "shortcuts", shortcutsOf(trigger_));
    const Answer created =
        Request(bus_, cancellable_.get())
            .make("CreateSession", sessionOptions, [&](GVariant* options, GError** failure) {
              return bus_global_shortcuts_call_create_session_sync(
                  portal.get(), options, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr,
                  cancellable_.get(), failure);
            });
    outcome.message = created.error;
    if (created.response != 0U) return outcome;
    const char* session = nullptr;
    if (!g_variant_lookup(created.results.get(), "session_handle", "&s", &session) ||
        !g_variant_is_object_path(session)) {
      outcome.message = "CreateSession gave no session";
      return outcome;
    }
    outcome.session = session;
    if (const GVariantPtr shortcut = listed(created, trigger_)) {
      judge(outcome, shortcut.get());
      return outcome;
    }
    outcome.hasAsked = true;
    auto bindOptions = builder("a{sv}");
    const Answer bound =
        Request(bus_, cancellable_.get())
            .make("BindShortcuts", bindOptions, [&](GVariant* options, GError** failure) {
              constexpr const char* kNoParentWindow = "";
              return bus_global_shortcuts_call_bind_shortcuts_sync(
                  portal.get(), session, shortcutsOf(trigger_), kNoParentWindow, options,
                  G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, cancellable_.get(), failure);
            });
    outcome.message = bound.error;
    if (bound.response == 0U) judge(outcome, listed(bound, trigger_).get());
    return outcome;
  }

  /// Portals that know this call do not find out by themselves whose request it is; to the others
  /// it means nothing.
  void introduce() {
    const GObjectPtr<BusPortalRegistry> registry(bus_portal_registry_proxy_new_sync(
        bus_, kForCalls, kPortal, kPath, cancellable_.get(), nullptr));
    if (!registry) return;
    auto none = builder("a{sv}");
    bus_portal_registry_call_register(registry.get(), "cn.kestrio.norvane",
                                      g_variant_builder_end(&none), G_DBUS_CALL_FLAGS_NONE, -1,
                                      nullptr, nullptr, nullptr);
  }

  void judge(Outcome& outcome, GVariant* shortcut) const {
    const char* key = shortcut ? "not told" : "";
    if (shortcut) g_variant_lookup(shortcut, "trigger_description", "&s", &key);
    outcome.status = *key == '\0' ? eventHotKeyExistsErr : noErr;
    outcome.message = "the desktop's key for " + trigger_ + " is " + (*key ? key : "none");
  }

  GDBusConnection* bus_;
  std::string trigger_;
  std::promise<Outcome> promise_;
  std::future<Outcome> outcome_{promise_.get_future()};
  GObjectPtr<GCancellable> cancellable_{g_cancellable_new()};
  std::thread thread_;
};

GlobalShortcutsPortal::GlobalShortcutsPortal(Dispatch& dispatch, std::function<void()> pressed,
                                             std::function<void()> answered)
    : PostedHotkeys(dispatch), pressed_(std::move(pressed)), answered_(std::move(answered)) {}

// The portal ends the session with the connection.
GlobalShortcutsPortal::~GlobalShortcutsPortal() { stopListening(); }

OSStatus GlobalShortcutsPortal::RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                    const EventHotKeyID& id,
                                                    std::optional<EventHotKeyRef>& hotKeyRef) {
  if (isHeld_) return eventHotKeyExistsErr;
  const std::string trigger = triggerText(keyCode, modifiers);
  if (trigger.empty()) return paramErr;
  if (*hasGivenUp_) return eventInternalErr;
  alive_.reset();
  attempt_.reset();
  stopListening();
  bus_ = sessionBus();
  if (!bus_) {
    NSLog("[Norvane] no global hotkey: there is no session bus to ask the desktop on");
    return giveUp(eventInternalErr);
  }
  id_ = id;
  alive_ = std::make_shared<bool>(true);
  const auto finished = [this, alive = std::weak_ptr(alive_)] {
    dispatch_.mainAsync([this, alive] {
      if (alive.lock() && attempt_->outcome().valid()) conclude();
    });
  };
  attempt_ = std::make_unique<Attempt>(bus_.get(), trigger, std::exchange(session_, {}), finished);
  if (attempt_->outcome().wait_for(kPatience) != std::future_status::ready) {
    NSLog("[Norvane] no global hotkey yet: the desktop has not decided about it");
    session_ = ownPath(bus_.get(), "session", kSessionToken);  // if there is one
    return giveUp(eventInternalErr);
  }
  const OSStatus status = conclude();
  if (status == noErr) {
    isHeld_ = true;
    hotKeyRef = kHotKeyRef;
  }
  return status;
}

OSStatus GlobalShortcutsPortal::conclude() {
  const Attempt::Outcome outcome = attempt_->outcome().get();
  if (const auto answered = std::exchange(answered_, {})) answered();
  NSLog((outcome.status == eventInternalErr
             ? "[Norvane] no global hotkey: on a Wayland session only the desktop portal's "
               "GlobalShortcuts can give one, and its "
             : "[Norvane] ") +
        outcome.message);
  session_ = outcome.session;
  if (!session_.empty()) listen();
  if (outcome.status != noErr && (outcome.hasAsked || session_.empty())) giveUp(outcome.status);
  return outcome.status;
}

OSStatus GlobalShortcutsPortal::giveUp(OSStatus status) {
  *hasGivenUp_ = true;
  dispatch_.mainAsync([flag = hasGivenUp_] { *flag = false; });
  return status;
}

void GlobalShortcutsPortal::stopListening() {
  activations_.reset();
  closing_.reset();
}

void GlobalShortcutsPortal::listen() {
  const auto activated = +[](BusGlobalShortcuts*, const char* session, const char* /*shortcut*/,
                             guint64 /*time*/, GVariant* /*options*/, GlobalShortcutsPortal* self) {
    if (session != self->session_) return;
    self->pressed_();
    self->post(self->id_);
  };
  const auto closed = +[](BusPortalSession*, GlobalShortcutsPortal* self) {
    NSLog("[Norvane] the desktop took the global hotkey away");
    self->session_.clear();
  };
  activations_.reset(bus_global_shortcuts_proxy_new_sync(bus_.get(), kForSignals, kPortal, kPath,
                                                         nullptr, nullptr));
  closing_.reset(bus_portal_session_proxy_new_sync(bus_.get(), kForSignals, kPortal,
                                                   session_.c_str(), nullptr, nullptr));
  if (activations_) g_signal_connect(activations_.get(), "activated", G_CALLBACK(activated), this);
  if (closing_) g_signal_connect(closing_.get(), "closed", G_CALLBACK(closed), this);
}

OSStatus GlobalShortcutsPortal::UnregisterEventHotKey(EventHotKeyRef /*hotKeyRef*/) {
  if (!std::exchange(isHeld_, false)) return eventHotKeyInvalidErr;
  stopListening();
  if (!session_.empty()) closeSession(bus_.get(), std::exchange(session_, {}), nullptr);
  return noErr;
}

}  // namespace norvane
