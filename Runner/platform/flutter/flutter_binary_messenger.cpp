#include "platform/flutter/flutter_binary_messenger.h"

#include <utility>

#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/platform.h"

namespace norvane {

FlutterBinaryReply::FlutterBinaryReply(std::shared_ptr<const std::string> channel,
                                       std::weak_ptr<const void> engine, Sink sink)
    : channel_(std::move(channel)), engine_(std::move(engine)), sink_(std::move(sink)) {}

FlutterBinaryReply::~FlutterBinaryReply() {
  if (!sink_ || engine_.expired()) return;
  reportFault("a message on " + *channel_ + " was not answered");
  Dispatch& dispatch = platform().dispatch;
  if (dispatch.isMainThread()) {
    sink_({});
    return;
  }
  dispatch.mainAsync([engine = std::move(engine_), sink = std::move(sink_)]() mutable {
    if (!engine.expired()) sink({});
  });
}

void FlutterBinaryReply::send(Bytes reply) {
  requireMainThread("a reply");
  if (engine_.expired()) return;
  if (!sink_) {
    reportFault("a message on " + *channel_ + " was answered twice");
    return;
  }
  std::exchange(sink_, {})(std::move(reply));
}

void FlutterBinaryReply::drop() { sink_ = {}; }

void FlutterBinaryMessenger::setMessageHandler(const std::string& channel, Handler handler) {
  if (!handler) {
    if (bindings_.erase(channel) > 0) announce(channel, false);
    return;
  }
  auto& binding = bindings_[channel];
  const bool wasBound = binding != nullptr;
  binding = std::make_shared<const Binding>(Binding{channel, std::move(handler)});
  if (!wasBound) announce(channel, true);
}

void FlutterBinaryMessenger::announce(std::string_view channel, bool isBound) const {
  if (engine_ && announcement_) announcement_(channel, isBound);
}

void FlutterBinaryMessenger::send(std::string_view channel, Bytes message) {
  requireMainThread("a call to the UI");
  if (engine_) outgoing_(channel, std::move(message));
}

void FlutterBinaryMessenger::engineEnded() {
  for (const auto& [channel, binding] : bindings_) announce(channel, false);
  engine_.reset();
}

void FlutterBinaryMessenger::deliver(const std::string& channel, Bytes message,
                                     FlutterBinaryReply::Sink sink) {
  requireMainThread("a message of the UI");
  const auto found = bindings_.find(channel);
  if (found == bindings_.end()) {
    sink({});
    return;
  }
  // Kept for the call: the handler may replace itself or end the engine.
  const auto binding = found->second;
  binding->handler(std::move(message),
                   FlutterBinaryReply({binding, &binding->channel}, engine_, std::move(sink)));
}

}  // namespace norvane
