#include "platform/gtk/gtk_updater.h"

#include <system_error>
#include <utility>

#include <gtk/gtk.h>

#include "base/utf8.h"
#include "platform/linux/glib_handles.h"
#include "platform/session/update_feed.h"

namespace norvane {

class GtkUpdater::Controller : public SPUStandardUpdaterController {
 public:
  explicit Controller(GtkUpdater& updater) : updater_(updater) {}
  void checkForUpdates() override { updater_.check(); }

 private:
  GtkUpdater& updater_;
};

GtkUpdater::GtkUpdater(Dispatch& dispatch, std::optional<std::string> feed, std::string version)
    : dispatch_(dispatch), feed_(std::move(feed)), version_(std::move(version)) {}

GtkUpdater::~GtkUpdater() { closeDialog(); }

std::unique_ptr<SPUStandardUpdaterController> GtkUpdater::makeUpdaterController(
    bool /*startingUpdater*/) {
  return std::make_unique<Controller>(*this);
}

void GtkUpdater::check() {
  if (isLooking_) return;
  closeDialog();
  const auto tell = [this, weak = std::weak_ptr(self_)](UpdateFinding finding) {
    dispatch_.mainAsync([weak, finding = std::move(finding)] {
      if (const auto updater = weak.lock()) (*updater)->show(finding);
    });
  };
  isLooking_ = true;
  try {
    look_ = std::jthread(
        [this, tell](const std::stop_token& stop) { tell(lookForUpdate(feed_, version_, stop)); });
  } catch (const std::system_error& error) {
    tell({.kind = UpdateFinding::Kind::unknown, .reason = error.code().message()});
  }
}

void GtkUpdater::show(const UpdateFinding& finding) {
  isLooking_ = false;
  const bool failed = finding.kind == UpdateFinding::Kind::unknown;
  dialog_ = gtk_message_dialog_new(nullptr, GtkDialogFlags{},
                                   failed ? GTK_MESSAGE_WARNING : GTK_MESSAGE_INFO,
                                   GTK_BUTTONS_CLOSE, nullptr);
  const auto say = [&](const char* heading, const char* format, auto... values) {
    const GTextPtr text(g_markup_printf_escaped(format, values...));
    g_object_set(dialog_, "text", heading, "secondary-text", text.get(), "secondary-use-markup",
                 TRUE, nullptr);
  };
  switch (finding.kind) {
    case UpdateFinding::Kind::newer:
      say("A newer version of Norvane is available",
          "Version %s can be had at <a href=\"%s\">%s</a>. This is version %s.",
          finding.version.c_str(), finding.url.c_str(), finding.url.c_str(), version_.c_str());
      break;
    case UpdateFinding::Kind::current:
      say("Norvane is up to date", "There is nothing newer than version %s.", version_.c_str());
      break;
    case UpdateFinding::Kind::unknown:
      say("Norvane could not look for a newer version", "%s.", utf8Of(finding.reason).c_str());
      break;
    case UpdateFinding::Kind::noFeed:
      say("Norvane does not look for newer versions",
          "No update feed is configured. This is version %s.", version_.c_str());
      break;
  }
  gtk_window_set_title(GTK_WINDOW(dialog_), "Norvane");
  gtk_window_set_position(GTK_WINDOW(dialog_), GTK_WIN_POS_CENTER);
  g_signal_connect(dialog_, "response", G_CALLBACK(gtk_widget_destroy), nullptr);
  g_signal_connect(dialog_, "destroy", G_CALLBACK(gtk_widget_destroyed), &dialog_);
  gtk_window_present(GTK_WINDOW(dialog_));
}

void GtkUpdater::closeDialog() {
  if (dialog_) gtk_widget_destroy(dialog_);
}

}  // namespace norvane
