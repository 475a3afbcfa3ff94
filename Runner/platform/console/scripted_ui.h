#pragma once

#include <map>
#include <string>
#include <string_view>

#include "base/secure_memory.h"
#include "platform/flutter/flutter_binary_messenger.h"
#include "platform/flutter/flutter_embedder.h"

namespace norvane {

/// The UI program's view of what the host does, as it happens.
class UiObserver {
 public:
  virtual ~UiObserver() = default;
  virtual void started(std::string_view engine, std::string_view entrypoint) = 0;
  virtual void pluginRegistered(std::string_view engine, std::string_view name) = 0;
  /// The host calls the UI.
  virtual void called(std::string_view engine, std::string_view channel, Bytes message) = 0;
};

/// UI programs that are played by someone else: the console, or a test. Main thread.
class ScriptedUi : public FlutterEmbedder {
 public:
  /// Null for none: what the host sends is then lost, as with a UI that never listens.
  void setObserver(UiObserver* observer) { observer_ = observer; }

  /// Sends a message as `engine`'s UI program. False, and `reply` is not called, when no such
  /// engine runs.
  bool send(const std::string& engine, const std::string& channel, Bytes message,
            FlutterBinaryReply::Sink reply);

  void run(FlutterEngine& engine, std::string_view entrypoint) override;
  void shutDown(FlutterEngine& engine) override;
  void send(FlutterEngine& engine, std::string_view channel, Bytes message) override;
  void registerPlugin(std::string_view plugin, const FlutterPluginRegistrar& registrar) override;

 private:
  UiObserver* observer_ = nullptr;
  std::map<std::string, FlutterEngine*> engines_;
};

}  // namespace norvane
