#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/secure_memory.h"
#include "platform/flutter/flutter_engine.h"
#include "platform/linux/glib_handles.h"
#include "platform/ui/engine_library.h"
#include "platform/ui/outbox.h"
#include "platform/ui/plugin_libraries.h"

namespace norvane {

/// One engine of the UI toolkit's library, for one of the host's. The library's own starts when its
/// view is first shown, and ends with this. Main thread.
class LibraryEngine {
 public:
  explicit LibraryEngine(FlutterEngine& engine);
  LibraryEngine(const LibraryEngine&) = delete;
  ~LibraryEngine();

  /// The widget that will show the view, in which one that is `clear` lets be seen what is behind
  /// it; floating. One at a time.
  GtkWidget* makeFrame(bool clear);

  /// Makes the view of `project`. `latePlugins` register themselves when it is first shown, after
  /// the others.
  void start(std::shared_ptr<const EngineLibrary> library, const PluginLibraries& plugins,
             FlDartProject* project, std::vector<std::string> latePlugins);
  /// There is no view; the frame says why.
  void fail(const std::string& reason);

  /// Calls `drawn` once: at the view's first frame, when its engine is found not to run, or at once
  /// where neither will be told.
  void whenDrawn(std::function<void()> drawn);
  /// Whether it neither runs nor is waited for.
  bool isUnused() const;
  /// From now on the library's engine stays, whatever becomes of this and of the window.
  void leaveRunning();
  void registerPlugin(const std::string& plugin);
  void bind(std::string_view channel);
  void unbind(std::string_view channel);
  /// Waits, if need be, until the view was shown.
  void send(std::string_view channel, Bytes message);

 private:
  static void shown(GtkWidget* view, LibraryEngine* self);
  void setHandler(const std::string& channel);
  void post(std::string_view channel, Bytes message);
  void fillFrame();
  void reportWhetherItRuns();

  FlutterEngine& engine_;
  std::shared_ptr<const EngineLibrary> library_;
  const PluginLibraries* plugins_ = nullptr;
  std::vector<std::string> latePlugins_;
  GtkWidget* frame_ = nullptr;  // the window's; null when it is gone
  bool isClear_ = false;
  GObjectPtr<GtkWidget> view_;
  GObjectPtr<FlBinaryMessenger> messenger_;  // the view's, which a window may destroy before us
  std::string failure_;
  std::set<std::string, std::less<>> bound_;
  Outbox outbox_;
  bool wasShown_ = false;
  std::shared_ptr<std::function<void()>> drawn_ = std::make_shared<std::function<void()>>();
};

}  // namespace norvane
