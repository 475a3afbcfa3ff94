#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

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
  virtual void called(std::string_view engine, std::string_view channel, const Bytes& message) = 0;
  /// The UI calls the host, whoever plays it: its message of that number.
  virtual void sent(std::uint64_t /*number*/, std::string_view /*engine*/,
                    std::string_view /*channel*/, const Bytes& /*message*/) {}
  /// The answer to that message, just before whoever sent it gets it.
  virtual void answered(std::uint64_t /*number*/, const Bytes& /*reply*/) {}
};

/// UI programs that are played by someone else: the console, or a test. Main thread.
class ScriptedUi : public FlutterEmbedder {
 public:
  /// Each hears of everything from now on. While there is none, what the host sends is lost, as
  /// with a UI that never listens.
  void addObserver(UiObserver& observer) { observers_.push_back(&observer); }
  void removeObserver(UiObserver& observer) { std::erase(observers_, &observer); }

  /// Sends a message as `engine`'s UI program; as engines do, it answers one on a channel that is
  /// not bound itself, with "not implemented". False, and `reply` is not called, when no such
  /// engine runs.
  bool send(const std::string& engine, const std::string& channel, Bytes message,
            FlutterBinaryReply::Sink reply);

  void run(FlutterEngine& engine, std::string_view entrypoint) override;
  void shutDown(FlutterEngine& engine) override;
  void send(FlutterEngine& engine, std::string_view channel, Bytes message) override;
  void channelBound(FlutterEngine& engine, std::string_view channel) override;
  void channelUnbound(FlutterEngine& engine, std::string_view channel) override;
  void registerPlugin(std::string_view plugin, const FlutterPluginRegistrar& registrar) override;

 private:
  std::vector<UiObserver*> observers_;
  std::uint64_t sent_ = 0;
  std::map<std::string, FlutterEngine*> engines_;
  std::map<const FlutterEngine*, std::set<std::string, std::less<>>> bound_;
};

}  // namespace norvane
