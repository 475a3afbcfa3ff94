#pragma once

#include <string_view>

#include "base/secure_memory.h"

namespace norvane {

class FlutterEngine;
struct FlutterPluginRegistrar;

/// What runs UI programs and takes the host's messages to them. Main thread. Nothing of an engine
/// is called inside one of these calls, and none fails: a UI that cannot run never speaks.
class FlutterEmbedder {
 public:
  virtual ~FlutterEmbedder() = default;

  /// Starts `engine`'s UI program at `entrypoint`; once an engine. From now on the program may call
  /// `engine.binaryMessenger().deliver`, in later turns. `engine` stays its owner's.
  virtual void run(FlutterEngine& engine, std::string_view entrypoint) = 0;
  /// The engine, which runs, ends; nothing may reach it any more. Replies that come later go
  /// nowhere.
  virtual void shutDown(FlutterEngine& engine) = 0;

  /// Takes `message` to the channel in `engine`'s UI program; returns without waiting, and is never
  /// answered. Messages of a channel arrive in their order. The bytes may hold a secret.
  virtual void send(FlutterEngine& engine, std::string_view channel, Bytes message) = 0;

  /// Lets the UI toolkit's plugin of the class `plugin` register itself with `registrar`, whose
  /// engine runs; once for each. One that this desktop does not have is left out.
  virtual void registerPlugin(std::string_view plugin, const FlutterPluginRegistrar& registrar) = 0;
};

}  // namespace norvane
