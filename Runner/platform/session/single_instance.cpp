#include "platform/session/single_instance.h"

#include <utility>

#include <gio/gio.h>

#include "platform/linux/glib_handles.h"
#include "platform/session/journal_log.h"

namespace norvane {

struct SingleInstance::Signals {
  static void open(GApplication*, GFile** files, gint count, const char*, SingleInstance* self) {
    for (gint i = 0; i < count; ++i) {
      if (self->onLink_) self->onLink_(GTextPtr(g_file_get_uri(files[i])).get());
    }
  }
  static void activate(GApplication*, SingleInstance* self) {
    if (self->onReopen_) self->onReopen_();
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
  GError* raised = nullptr;
  if (!g_application_register(application.get(), nullptr, &raised)) {
    const GErrorPtr error(raised);
    // There is no platform yet whose log could be written.
    JournalLog().write(std::string("[Norvane] no name on the session bus: ") + error->message);
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
                            std::function<void()> onReopen) {
  onLink_ = std::move(onLink);
  onReopen_ = std::move(onReopen);
}

}  // namespace norvane
