#pragma once

#include <memory>
#include <optional>
#include <string>

namespace norvane {

/// What the application's delegate does for the services' channels. Main thread.
class AppServices {
 public:
  virtual ~AppServices() = default;

  /// Those of the application's delegate; null when it has none, or one of another kind.
  static std::shared_ptr<AppServices> current();

  /// Takes the choice, gives the old combination up and tries the new chain. The choice in force
  /// changes nothing.
  virtual void setHotkeyChoice(const std::string& choice) = 0;
  /// The choice in force: "auto", or a combination's code.
  virtual std::string hotkeyChoice() const = 0;
  /// Of the combination that is registered, if one is.
  virtual std::optional<std::string> registeredHotkeyLabel() const = 0;

  /// Looks for an update and shows the person what comes of it. Returns at once.
  virtual void checkForUpdates() = 0;
};

}  // namespace norvane
