#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/ui/engine_library.h"

namespace norvane {

/// The name of the function that registers the plugin of the class `plugin`, as the toolkit's tool
/// spells it: UrlLauncherPlugin has url_launcher_plugin_register_with_registrar. What a class is
/// called on the home system only, "MacOS" in its name, falls away.
std::string registeringFunction(std::string_view plugin);

/// The native plugins of a UI bundle. Main thread; what was opened stays loaded.
class PluginLibraries {
 public:
  using Register = void (*)(FlPluginRegistrar*);

  /// Opens every library; one that cannot be is one log record.
  explicit PluginLibraries(const std::vector<std::string>& paths);

  /// Null where no library has it.
  Register find(std::string_view plugin) const;

 private:
  std::vector<void*> handles_;
};

}  // namespace norvane
