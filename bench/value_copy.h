#pragma once

#include "platform/flutter/standard_method_codec.h"

namespace norvane {

template <class Element>
FlutterValue copyOf(std::span<const Element> elements) {
  return std::vector<Element>(elements.begin(), elements.end());
}

/// What `view` shows, owned.
inline FlutterValue copyOf(FlutterValueView view) {
  if (const auto value = view.boolean()) return *value;
  if (view.type() == FlutterType::int32) return static_cast<std::int32_t>(*view.integer());
  if (const auto value = view.integer()) return *value;
  if (const auto value = view.float64()) return *value;
  if (const auto value = view.text()) return *value;
  if (const auto value = view.bytes()) return copyOf(*value);
  if (const auto value = view.int32List()) return copyOf(*value);
  if (const auto value = view.int64List()) return copyOf(*value);
  if (const auto value = view.float32List()) return copyOf(*value);
  if (const auto value = view.float64List()) return copyOf(*value);
  if (const auto elements = view.list()) {
    FlutterList list;
    for (const FlutterValueView element : *elements) list.push_back(copyOf(element));
    return list;
  }
  if (const auto entries = view.map()) {
    FlutterMap map;
    for (const auto& [key, value] : *entries) map.emplace_back(copyOf(key), copyOf(value));
    return map;
  }
  return {};
}

/// The call or the reply in `message`, encoded anew; nothing when it is undecodable.
inline std::optional<Bytes> encodedAgain(Bytes message, bool isCall) {
  if (isCall) {
    const auto call = decodeMethodCall(std::move(message));
    if (!call) return std::nullopt;
    return encodeMethodCall(call->method(), copyOf(call->arguments()));
  }
  const auto reply = decodeEnvelope(std::move(message));
  if (!reply) return std::nullopt;
  if (reply->kind == FlutterReply::Kind::notImplemented) return Bytes{};
  if (reply->kind == FlutterReply::Kind::success)
    return encodeSuccessEnvelope(copyOf(reply->value));
  FlutterError error{.code = std::string(reply->errorCode), .details = copyOf(reply->errorDetails)};
  if (reply->errorMessage) error.message = *reply->errorMessage;
  return encodeErrorEnvelope(error);
}

}  // namespace norvane
