#include "window/plugin_registrant.h"

#include "platform/flutter/flutter_embedder.h"
#include "platform/platform.h"

namespace norvane {
namespace {

// Each plugin's class, which is also the name that it registers under.
constexpr const char* kPlugins[] = {
    "BiometricStorageMacOSPlugin", "FileSelectorPlugin", "LocalAuthPlugin",
    "MobileScannerPlugin",         "PrintingPlugin",     "SharedPreferencesPlugin",
    "UrlLauncherPlugin",
};

}  // namespace

void RegisterGeneratedPlugins(FlutterPluginRegistry& registry) {
  for (const char* plugin : kPlugins) {
    platform().flutter.registerPlugin(plugin, registry.registrarForPlugin(plugin));
  }
}

}  // namespace norvane
