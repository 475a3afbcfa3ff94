#pragma once

#include <string_view>

#include "base/secure_memory.h"

namespace norvane {

class FlutterEngine;
struct FlutterPluginRegistrar;

/// What runs UI programs and takes the host's messages to them. Main thread.
class FlutterEmbedder {
 public:
  virtual ~FlutterEmbedder() = default;

  /// Starts `engine`'s UI program at `entrypoint`. From now on the program may call
  /// `engine.binaryMessenger().deliver`, in later turns.
  virtual void run(FlutterEngine& engine, std::string_view entrypoint) = 0;
  /// The engine ends; nothing may reach it any more.
  virtual void shutDown(FlutterEngine& engine) = 0;

  virtual void send(FlutterEngine& engine, std::string_view channel, Bytes message) = 0;

  /// Lets the UI toolkit's plugin of the class `plugin` register itself with `registrar`.
  virtual void registerPlugin(std::string_view plugin, const FlutterPluginRegistrar& registrar) = 0;
};

}  // namespace norvane
