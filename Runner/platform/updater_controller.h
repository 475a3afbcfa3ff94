#pragma once

#include <memory>

namespace norvane {

/// Looks for newer versions of the application, with a user interface of its own. Main thread.
class SPUStandardUpdaterController {
 public:
  virtual ~SPUStandardUpdaterController() = default;
  /// Looks once and shows the person what comes of it, a failure too. Returns at once. While a look
  /// is under way nothing more need come of it.
  virtual void checkForUpdates() = 0;
};

/// Where updater controllers come from. Main thread.
class UpdaterFramework {
 public:
  virtual ~UpdaterFramework() = default;
  /// A controller without delegates, never null; it must not outlive this. With `startingUpdater`
  /// its updater may look from time to time by itself.
  virtual std::unique_ptr<SPUStandardUpdaterController> makeUpdaterController(
      bool startingUpdater) = 0;
};

}  // namespace norvane
