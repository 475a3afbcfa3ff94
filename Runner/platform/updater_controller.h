#pragma once

#include <memory>

namespace norvane {

/// Looks for newer versions of the application, with a user interface of its own. Main thread.
class SPUStandardUpdaterController {
 public:
  virtual ~SPUStandardUpdaterController() = default;
  virtual void checkForUpdates() = 0;
};

class UpdaterFramework {
 public:
  virtual ~UpdaterFramework() = default;
  /// A controller without delegates; with `startingUpdater` its updater runs at once.
  virtual std::unique_ptr<SPUStandardUpdaterController> makeUpdaterController(
      bool startingUpdater) = 0;
};

}  // namespace norvane
