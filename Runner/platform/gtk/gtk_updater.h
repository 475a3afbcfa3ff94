#pragma once

#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "platform/dispatch.h"
#include "platform/updater_controller.h"

struct _GtkWidget;

namespace norvane {

struct UpdateFinding;

/// Looks at the update feed when the person asks, and says in a dialog what it found. It downloads
/// and installs nothing. Main thread; ends a look that is under way when it is destroyed.
class GtkUpdater : public UpdaterFramework {
 public:
  /// `feed`: address of the feed (see update_feed.h); `version`: the one that runs.
  GtkUpdater(Dispatch& dispatch, std::optional<std::string> feed, std::string version);
  ~GtkUpdater() override;

  /// The controllers must not outlive this. None looks before it is asked to.
  std::unique_ptr<SPUStandardUpdaterController> makeUpdaterController(
      bool startingUpdater) override;

 private:
  class Controller;
  void check();
  void show(const UpdateFinding& finding);
  void closeDialog();

  Dispatch& dispatch_;
  const std::optional<std::string> feed_;
  const std::string version_;
  bool isLooking_ = false;
  _GtkWidget* dialog_ = nullptr;
  const std::shared_ptr<GtkUpdater*> self_ = std::make_shared<GtkUpdater*>(this);
  // Its own, so that the workers' end, which waits for their tasks, need not wait for a network.
  std::jthread look_;
};

}  // namespace norvane
