#pragma once

#include <memory>
#include <string>

#include "autofill/items.h"
#include "autofill/turns.h"
#include "platform/flutter/flutter_method_channel.h"
#include "platform/serial_queue.h"

namespace norvane {

/// The host's side of the AutoFill channel: keeps the system's password AutoFill up to date with
/// the UI's logins and passkeys. Owned by the main window. Called on the main thread; replies there
/// too, once a call, also for work that fails in a way that nobody foresaw.
class AutoFillBridge {
 public:
  /// Opens the channel on the main engine's messenger and serves it for as long as the bridge
  /// lives.
  static std::shared_ptr<AutoFillBridge> make(
      const std::shared_ptr<FlutterBinaryMessenger>& messenger);

 private:
  /// Shared, because what follows a call may be tried again after the step before has failed.
  using Result = std::shared_ptr<FlutterResult>;

  explicit AutoFillBridge(const std::shared_ptr<FlutterBinaryMessenger>& messenger);

  void handle(FlutterMethodCall call, FlutterResult result);
  void getState(const Result& result);
  void registerCredentials(const Items& items, const Result& result);
  void registerPasskeys(const Items& items, const Result& result);
  void syncVaultSnapshot(FlutterMethodCall call, const Result& result);
  void syncPasskeyIndex(FlutterMethodCall call, const Result& result);
  void clearCredentials(const Result& result);

  FlutterMethodChannel channel;
  // Syncs of one kind run in the order of their calls, or the key of one would come to stand beside
  // the file of another.
  std::shared_ptr<SerialQueue> snapshotQueue_;
  std::shared_ptr<SerialQueue> passkeyQueue_;
  // Registrations and clears change the credential store in the order of their calls, though a
  // registration asks it for its state first.
  std::shared_ptr<Turns> storeTurns_;
};

}  // namespace norvane
