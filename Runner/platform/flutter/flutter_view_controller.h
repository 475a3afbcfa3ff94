#pragma once

#include <memory>
#include <string>

#include "platform/flutter/flutter_engine.h"

namespace norvane {

/// Lets one plugin attach itself to an engine.
struct FlutterPluginRegistrar {
  std::string name;
  FlutterEngine& engine;
};

/// Where plugins attach themselves. Main thread.
class FlutterPluginRegistry {
 public:
  virtual ~FlutterPluginRegistry() = default;
  /// The registrar for the plugin that goes by `name`; it must not outlive the engine that it
  /// names.
  virtual FlutterPluginRegistrar registrarForPlugin(const std::string& name) = 0;
};

/// Shows the UI of one engine in a window. Main thread.
class FlutterViewController : public FlutterPluginRegistry {
 public:
  /// With an engine of its own, the application's main one, named "main".
  FlutterViewController();
  explicit FlutterViewController(std::shared_ptr<FlutterEngine> engine);

  FlutterEngine& engine() { return *engine_; }
  /// Lets what lies behind the window be seen where the UI draws nothing.
  void setClearBackground() { clearBackground_ = true; }
  bool hasClearBackground() const { return clearBackground_; }
  FlutterPluginRegistrar registrarForPlugin(const std::string& name) override;

  /// The window's side: the view is about to show. Runs the engine at "main" unless it runs
  /// already.
  void loadView();

 private:
  std::shared_ptr<FlutterEngine> engine_;
  bool clearBackground_ = false;
};

}  // namespace norvane
