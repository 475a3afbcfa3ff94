#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/flutter/flutter_binary_messenger.h"
#include "platform/flutter/standard_method_codec.h"

namespace norvane {

/// The reply to one call; given exactly once, on the main thread (see `FlutterBinaryReply`).
class FlutterResult {
 public:
  explicit FlutterResult(FlutterBinaryReply reply) : reply_(std::move(reply)) {}

  /// Success; null for success without a value.
  void operator()(const FlutterValue& value) { reply_.send(encodeSuccessEnvelope(value)); }
  void operator()(const FlutterError& error) { reply_.send(encodeErrorEnvelope(error)); }
  void operator()(FlutterMethodNotImplementedReply) { reply_.send({}); }
  /// Gives no reply, where nobody is left to answer for.
  void drop() { reply_.drop(); }

 private:
  FlutterBinaryReply reply_;
};

/// A named, two-way path for method calls in the standard method codec. Main thread only. The
/// messenger keeps the handler; the channel object need not be kept for it.
class FlutterMethodChannel {
 public:
  using Handler = std::function<void(FlutterMethodCall call, FlutterResult result)>;

  FlutterMethodChannel(std::string name, const std::shared_ptr<FlutterBinaryMessenger>& messenger)
      : name_(std::move(name)), messenger_(messenger) {}

  /// An empty handler unbinds the channel. A call that cannot be decoded never reaches `handler`:
  /// it is logged and answered with "not implemented". What `handler` throws ends here, with one
  /// answer.
  void setMethodCallHandler(Handler handler);

  /// Calls the UI without waiting for a reply; nothing happens when the engine is gone.
  void invokeMethod(std::string_view method, const FlutterValue& arguments = {});

 private:
  std::string name_;
  std::weak_ptr<FlutterBinaryMessenger> messenger_;
};

}  // namespace norvane
