#include "platform/session/single_instance.h"

#include <algorithm>
#include <utility>

#include <gio/gio.h>

#include "platform/linux/glib_handles.h"
#include "platform/log.h"
#include "platform/session/session.h"

namespace norvane {

namespace {

/// The action, named as the application's entry names it.
constexpr const char* kQuit = "Quit";

}  // namespace

struct SingleInstance::Signals {
  static void open(GApplication*, GFile** files, gint count, const char*, SingleInstance* self) {
    for (gint i = 0; i < count; ++i) {
      if (self->onLink_) self->onLink_(GTextPtr(g_file_get_uri(files[i])).get());
    }
  }
  static void activate(GApplication*, SingleInstance* self) {
    if (self->onReopen_) self->onReopen_();
  }
  static void quit(GSimpleAction*, GVariant*, SingleInstance* self) {
    if (self->onQuit_) self->onQuit_();
  }
};

SingleInstance::SingleInstance(const char* applicationId) {
  // The first instance may be about to end, and not answer: then the name is free.
  for (int attempt = 0; attempt < 2 && !application_; ++attempt) claim(applicationId);
}

SingleInstance::~SingleInstance() {
  if (application_) g_object_unref(application_);
}

void SingleInstance::claim(const char* applicationId) {
  GObjectPtr<GApplication> application(
      g_application_new(applicationId, G_APPLICATION_HANDLES_OPEN));
  g_signal_connect(application.get(), "open", G_CALLBACK(&Signals::open), this);
  g_signal_connect(application.get(), "activate", G_CALLBACK(&Signals::activate), this);
  const GObjectPtr<GSimpleAction> quit(g_simple_action_new(kQuit, nullptr));
  g_signal_connect(quit.get(), "activate", G_CALLBACK(&Signals::quit), this);
  g_action_map_add_action(G_ACTION_MAP(application.get()), G_ACTION(quit.get()));
  GError* raised = nullptr;
  if (!g_application_register(application.get(), nullptr, &raised)) {
    const GErrorPtr error(raised);
    NSLog(std::string("[Norvane] no name on the session bus: ") + error->message);
    return;
  }
  isSecond_ = g_application_get_is_remote(application.get());
  application_ = application.release();
}

void SingleInstance::handOver(const std::vector<std::string>& links) {
  std::vector<GObjectPtr<GFile>> files;
  std::vector<GFile*> borrowed;
  borrowed.reserve(links.size());
  for (const std::string& link : links) {
    borrowed.push_back(files.emplace_back(g_file_new_for_uri(link.c_str())).get());
  }
  if (files.empty()) {
    g_application_activate(application_);
  } else {
    g_application_open(application_, borrowed.data(), static_cast<gint>(borrowed.size()), "");
  }
  // The message is on its way only once it has left this process.
  g_dbus_connection_flush_sync(g_application_get_dbus_connection(application_), nullptr, nullptr);
}

void SingleInstance::listen(std::function<void(const std::string& link)> onLink,
                            std::function<void()> onReopen, std::function<void()> onQuit) {
  onLink_ = std::move(onLink);
  onReopen_ = std::move(onReopen);
  onQuit_ = std::move(onQuit);
}

std::optional<std::string> SingleInstance::quitRunning(const char* applicationId) {
  const auto bus = sessionBus();
  if (!bus) return "there is no session bus to ask on";
  std::string path = std::string("/") + applicationId;
  std::ranges::replace(path, '.', '/');
  constexpr int kPatience = 10000;  // milliseconds
  GError* raised = nullptr;
  const GVariantPtr answer(g_dbus_connection_call_sync(
      bus.get(), applicationId, path.c_str(), "org.freedesktop.Application", "ActivateAction",
      g_variant_new("(s@av@a{sv})", kQuit, g_variant_new("av", nullptr),
                    g_variant_new("a{sv}", nullptr)),
      nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, kPatience, nullptr, &raised));
  const GErrorPtr error(raised);
  if (!error || g_error_matches(raised, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
      g_error_matches(raised, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER)) {
    return std::nullopt;
  }
  return std::string("the instance that runs does not answer: ") + error->message;
}

}  // namespace norvane
