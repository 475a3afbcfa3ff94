#include "platform/flutter/flutter_method_channel.h"

#include <optional>

#include "platform/log.h"

namespace norvane {

void FlutterMethodChannel::setMethodCallHandler(Handler handler) {
  const auto messenger = messenger_.lock();
  if (!messenger) return;
  if (!handler) {
    messenger->setMessageHandler(name_, {});
    return;
  }
  messenger->setMessageHandler(
      name_, [name = name_, handler = std::move(handler)](Bytes message, FlutterBinaryReply reply) {
        const std::size_t size = message.size();
        auto call = decodeMethodCall(std::move(message));
        if (!call) {
          NSLog("[Norvane] undecodable call on " + name + " (" + std::to_string(size) + " bytes)");
          reply.send({});
          return;
        }
        try {
          handler(std::move(*call), FlutterResult(std::move(reply)));
        } catch (...) {
          // Its text is not logged: it may quote what the UI sent.
          reportFault("the handler of " + name + " threw");
        }
      });
}

void FlutterMethodChannel::invokeMethod(std::string_view method, const FlutterValue& arguments) {
  if (const auto messenger = messenger_.lock()) {
    messenger->send(name_, encodeMethodCall(method, arguments));
  }
}

}  // namespace norvane
