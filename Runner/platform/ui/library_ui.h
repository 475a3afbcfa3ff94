#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/flutter/flutter_embedder.h"
#include "platform/ui/library_engine.h"
#include "platform/ui/ui_bundle.h"
#include "platform/ui/window_ui.h"

namespace norvane {

/// UI programs of a UI bundle, run by the UI toolkit's own library, which is opened when the first
/// engine runs. Where that cannot be, one log record and the windows say why, and no UI ever
/// speaks.
class LibraryUi : public WindowUi, public FlutterEmbedder {
 public:
  /// `arguments` go to the program behind the host's own. `plugins` are registered after those that
  /// the host registers, by their classes.
  LibraryUi(UiBundle bundle, std::vector<std::string> arguments, std::vector<std::string> plugins);

  FlutterEmbedder& embedder() override { return *this; }
  _GtkWidget* makeView(FlutterViewController& controller) override;
  void whenDrawn(std::function<void()> drawn) override;
  bool processEnds() override;

  /// An entry point other than "main" travels as the program's first argument,
  /// "--entrypoint=NAME".
  void run(FlutterEngine& engine, std::string_view entrypoint) override;
  void shutDown(FlutterEngine& engine) override;
  void send(FlutterEngine& engine, std::string_view channel, Bytes message) override;
  void channelBound(FlutterEngine& engine, std::string_view channel) override;
  void channelUnbound(FlutterEngine& engine, std::string_view channel) override;
  void registerPlugin(std::string_view plugin, const FlutterPluginRegistrar& registrar) override;

 private:
  LibraryEngine& of(FlutterEngine& engine);
  void open();

  const UiBundle bundle_;
  const std::vector<std::string> arguments_;
  const std::vector<std::string> latePlugins_;
  std::shared_ptr<const EngineLibrary> library_;
  std::optional<PluginLibraries> plugins_;
  std::string failure_;
  std::map<const FlutterEngine*, LibraryEngine> engines_;
};

}  // namespace norvane
