#include "platform/session/global_shortcuts_portal.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/hotkey_press.h"
#include "platform/log.h"
#include "platform/session/key_codes.h"
#include "platform/session/session.h"

namespace norvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kShortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr auto kPatience = std::chrono::seconds(2);
constexpr EventHotKeyRef kHotKeyRef = 1;  // there is one at a time

using ContextPtr = std::unique_ptr<GMainContext, Deleter<g_main_context_unref>>;

int millisecondsUntil(Clock::time_point time) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
  return static_cast<int>(std::max<std::int64_t>(left, 0));
}

/// What the portal said to a request.
struct Answer {
  enum Kind { given, refused, none } kind = none;
  GVariantPtr results;  ///< of a{sv}
};

/// The answer to one request to the portal, which comes as a signal of an object of its own. It is
/// heard in a context of its own, so that the wait for it runs nothing else.
class Request {
 public:
  Request(GDBusConnection* bus, std::string token) : bus_(bus), token_(std::move(token)) {
    std::string sender = g_dbus_connection_get_unique_name(bus) + 1;  // without the colon
    std::ranges::replace(sender, '.', '_');
    const std::string path = std::string(kPath) + "/request/" + sender + "/" + token_;
    g_main_context_push_thread_default(context_.get());
    subscription_ = g_dbus_connection_signal_subscribe(
        bus, kPortal, "org.freedesktop.portal.Request", "Response", path.c_str(), nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, heard, &answer_, nullptr);
    g_main_context_pop_thread_default(context_.get());
  }
  ~Request() { g_dbus_connection_signal_unsubscribe(bus_, subscription_); }
  Request(const Request&) = delete;

  /// Makes the call, whose last argument is `options`, and waits.
  Answer make(const char* method, GVariantBuilder& arguments, GVariantBuilder& options,
              Clock::time_point deadline) {
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token_.c_str()));
    g_variant_builder_add_value(&arguments, g_variant_builder_end(&options));
    GError* error = nullptr;
    const GVariantPtr called(g_dbus_connection_call_sync(
        bus_, kPortal, kPath, kShortcuts, method, g_variant_builder_end(&arguments), nullptr,
        G_DBUS_CALL_FLAGS_NONE, std::max(millisecondsUntil(deadline), 1), nullptr, &error));
    const GErrorPtr failure(error);
    if (!called) {
      NSLog(
          std::string("[Norvane] no global hotkey: on a Wayland session only the desktop portal's "
                      "GlobalShortcuts can give one, and its ") +
          method + " failed: " + error->message);
      return {};
    }
    GSource* timer = g_timeout_source_new(static_cast<guint>(millisecondsUntil(deadline)));
    g_source_set_callback(
        timer, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(timer, context_.get());
    while (answer_.kind == Answer::none && Clock::now() < deadline) {
      g_main_context_iteration(context_.get(), TRUE);
    }
    g_source_destroy(timer);
    g_source_unref(timer);
    if (answer_.kind == Answer::none) {
      NSLog("[Norvane] no global hotkey yet: the desktop has not decided about it");
    }
    return std::move(answer_);
  }

 private:
  static void heard(GDBusConnection*, const char*, const char*, const char*, const char*,
                    GVariant* parameters, gpointer answer) {
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ua{sv})"))) return;
    guint32 response = 0;
    GVariant* results = nullptr;
    g_variant_get(parameters, "(u@a{sv})", &response, &results);
    *static_cast<Answer*>(answer) = {response == 0 ? Answer::given : Answer::refused,
                                     GVariantPtr(results)};
  }

  GDBusConnection* bus_;
  std::string token_;
  ContextPtr context_{g_main_context_new()};
  guint subscription_ = 0;
  Answer answer_;
};

std::string newToken() {
  static int number = 0;
  return "norvane" + std::to_string(++number);
}

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

/// The key that the desktop gave to a shortcut, in its words; nothing when it did not say, empty
/// when there is none.
std::optional<std::string> givenTrigger(const Answer& answer, const std::string& shortcut) {
  const GVariantPtr shortcuts(
      g_variant_lookup_value(answer.results.get(), "shortcuts", G_VARIANT_TYPE("a(sa{sv})")));
  if (!shortcuts) return std::nullopt;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, shortcuts.get());
  const char* id = nullptr;
  GVariant* properties = nullptr;
  while (g_variant_iter_next(&iterator, "(&s@a{sv})", &id, &properties)) {
    const GVariantPtr owner(properties);
    const char* trigger = nullptr;
    if (shortcut != id) continue;
    if (!g_variant_lookup(properties, "trigger_description", "&s", &trigger)) return std::nullopt;
    return trigger;
  }
  return "";
}

}  // namespace

GlobalShortcutsPortal::GlobalShortcutsPortal(EventTime& eventTime, Dispatch& dispatch)
    : eventTime_(eventTime), dispatch_(dispatch), handler_(dispatch) {}

GlobalShortcutsPortal::~GlobalShortcutsPortal() { endSession(); }

OSStatus GlobalShortcutsPortal::InstallEventHandler(Handler handler, const EventTypeSpec& type,
                                                    std::optional<EventHandlerRef>& handlerRef) {
  return handler_.InstallEventHandler(std::move(handler), type, handlerRef);
}

OSStatus GlobalShortcutsPortal::RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                    const EventHotKeyID& id,
                                                    std::optional<EventHotKeyRef>& hotKeyRef) {
  if (isHeld_) return eventHotKeyExistsErr;
  const std::string trigger = triggerText(keyCode, modifiers);
  if (trigger.empty()) return paramErr;
  if (*hasGivenUp_) return eventInternalErr;
  endSession();  // one that the person did not decide about in time
  bus_ = sessionBus();
  if (!bus_) NSLog("[Norvane] no global hotkey: there is no session bus to ask the desktop on");
  id_ = id;
  const OSStatus status = bus_ ? bind(trigger) : eventInternalErr;
  if (status == noErr) {
    isHeld_ = true;
    hotKeyRef = kHotKeyRef;
  } else if (status == eventInternalErr) {
    *hasGivenUp_ = true;
    dispatch_.mainAsync([flag = hasGivenUp_] { *flag = false; });
  }
  return status;
}

OSStatus GlobalShortcutsPortal::bind(const std::string& trigger) {
  GDBusConnection* bus = bus_.get();
  const auto deadline = Clock::now() + kPatience;
  // Portals that know this call do not find out by themselves whose request it is; to the others it
  // means nothing.
  g_dbus_connection_call(bus, kPortal, kPath, "org.freedesktop.host.portal.Registry", "Register",
                         g_variant_new("(sa{sv})", "cn.kestrio.norvane", nullptr), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
  auto sessionArguments = builder("(a{sv})");
  auto sessionOptions = builder("a{sv}");
  g_variant_builder_add(&sessionOptions, "{sv}", "session_handle_token",
                        g_variant_new_string(newToken().c_str()));
  const Answer created =
      Request(bus, newToken()).make("CreateSession", sessionArguments, sessionOptions, deadline);
  const char* session = nullptr;
  if (created.kind != Answer::given ||
      !g_variant_lookup(created.results.get(), "session_handle", "&s", &session) ||
      !g_variant_is_object_path(session)) {
    return eventInternalErr;
  }
  session_ = session;
  listen();

  auto arguments = builder("(oa(sa{sv})sa{sv})");
  g_variant_builder_add(&arguments, "o", session_.c_str());
  g_variant_builder_open(&arguments, G_VARIANT_TYPE("a(sa{sv})"));
  auto properties = builder("a{sv}");
  g_variant_builder_add(&properties, "{sv}", "description",
                        g_variant_new_string("Norvane — Quick Access"));
  g_variant_builder_add(&properties, "{sv}", "preferred_trigger",
                        g_variant_new_string(trigger.c_str()));
  // Named by its keys: the desktop remembers what it did with a name, and would not look at the
  // keys of another choice.
  g_variant_builder_add(&arguments, "(s@a{sv})", trigger.c_str(),
                        g_variant_builder_end(&properties));
  g_variant_builder_close(&arguments);
  g_variant_builder_add(&arguments, "s", "");  // no parent window
  auto options = builder("a{sv}");
  const Answer bound = Request(bus, newToken()).make("BindShortcuts", arguments, options, deadline);
  if (bound.kind == Answer::none) return eventInternalErr;  // the person may still agree
  if (bound.kind == Answer::refused) {
    NSLog("[Norvane] no global hotkey: the desktop refused it");
    endSession();
    return eventInternalErr;
  }
  const auto given = givenTrigger(bound, trigger);
  if (given && given->empty()) {
    endSession();
    return eventHotKeyExistsErr;
  }
  NSLog("[Norvane] the desktop's key for " + trigger + " is " + given.value_or("not told"));
  return noErr;
}

void GlobalShortcutsPortal::listen() {
  const auto activated = [](GDBusConnection*, const char*, const char*, const char*, const char*,
                            GVariant* parameters, gpointer data) {
    auto* self = static_cast<GlobalShortcutsPortal*>(data);
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(osta{sv})"))) return;
    const char* session = nullptr;
    g_variant_get_child(parameters, 0, "&o", &session);
    if (session != self->session_) return;
    // The portal's time is not the X server's; without one, that is asked for its own.
    self->eventTime_.set(0);
    self->handler_.post(self->id_);
  };
  const auto closed = [](GDBusConnection*, const char*, const char*, const char*, const char*,
                         GVariant*, gpointer data) {
    NSLog("[Norvane] the desktop took the global hotkey away");
    static_cast<GlobalShortcutsPortal*>(data)->session_.clear();
  };
  subscriptions_ = {
      g_dbus_connection_signal_subscribe(bus_.get(), kPortal, kShortcuts, "Activated", kPath,
                                         nullptr, G_DBUS_SIGNAL_FLAGS_NONE, activated, this,
                                         nullptr),
      g_dbus_connection_signal_subscribe(bus_.get(), kPortal, "org.freedesktop.portal.Session",
                                         "Closed", session_.c_str(), nullptr,
                                         G_DBUS_SIGNAL_FLAGS_NONE, closed, this, nullptr)};
}

OSStatus GlobalShortcutsPortal::UnregisterEventHotKey(EventHotKeyRef /*hotKeyRef*/) {
  if (!std::exchange(isHeld_, false)) return eventHotKeyInvalidErr;
  endSession();
  return noErr;
}

void GlobalShortcutsPortal::endSession() {
  for (const unsigned subscription : std::exchange(subscriptions_, {})) {
    g_dbus_connection_signal_unsubscribe(bus_.get(), subscription);
  }
  if (session_.empty()) return;
  g_dbus_connection_call(bus_.get(), kPortal, session_.c_str(), "org.freedesktop.portal.Session",
                         "Close", nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
                         nullptr, nullptr);
  session_.clear();
}

}  // namespace norvane
