#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/flutter/flutter_binary_messenger.h"

namespace norvane {

/// Runs one UI program. Main thread.
class FlutterEngine {
 public:
  explicit FlutterEngine(std::string name);
  ~FlutterEngine();
  FlutterEngine(const FlutterEngine&) = delete;
  FlutterEngine& operator=(const FlutterEngine&) = delete;

  const std::string& name() const { return name_; }
  /// False, and nothing else, when the engine runs already.
  bool runWithEntrypoint(std::string_view entrypoint);
  /// The engine keeps it; channels refer to it weakly.
  const std::shared_ptr<FlutterBinaryMessenger>& binaryMessenger() const { return messenger_; }

 private:
  std::string name_;
  bool running_ = false;
  std::shared_ptr<FlutterBinaryMessenger> messenger_;
};

}  // namespace norvane
