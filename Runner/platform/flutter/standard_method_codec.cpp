#include "platform/flutter/standard_method_codec.h"

#include <array>
#include <span>
#include <utility>

#include "platform/flutter/standard_message.h"

namespace norvane {
namespace {

constexpr std::uint8_t kSuccess = 0;
constexpr std::uint8_t kError = 1;

/// The `N` values that make up the rest of `message` from `offset`; nothing when that is not what
/// stands there.
template <std::size_t N>
std::optional<std::array<FlutterValueView, N>> onlyValues(const Bytes& message,
                                                          std::size_t offset) {
  std::array<FlutterValueView, N> values;
  const std::uint8_t* at = message.data() + offset;
  const std::uint8_t* const end = message.data() + message.size();
  for (FlutterValueView& value : values) {
    value = FlutterValueView(at);
    at = checkedValueEnd(at, end);
    if (!at) return std::nullopt;
  }
  if (at != end) return std::nullopt;
  return values;
}

}  // namespace

Bytes encodeMethodCall(std::string_view method, const FlutterValue& arguments) {
  Bytes message;
  StandardMessageWriter writer(message);
  writer.text(method);
  writer.value(arguments);
  return message;
}

std::optional<FlutterMethodCall> decodeMethodCall(Bytes message) {
  FlutterMethodCall call(std::move(message));
  const auto values = onlyValues<2>(call.message_, 0);
  if (!values) return std::nullopt;
  const auto method = (*values)[0].text();
  if (!method) return std::nullopt;
  call.method_ = *method;
  call.arguments_ = (*values)[1];
  return call;
}

Bytes encodeSuccessEnvelope(const FlutterValue& value) {
  Bytes message{kSuccess};
  StandardMessageWriter(message).value(value);
  return message;
}

Bytes encodeErrorEnvelope(const FlutterError& error) {
  Bytes message{kError};
  StandardMessageWriter writer(message);
  writer.text(error.code);
  if (error.message) {
    writer.text(*error.message);
  } else {
    writer.null();
  }
  writer.value(error.details);
  return message;
}

std::optional<FlutterReply> decodeEnvelope(Bytes message) {
  FlutterReply reply;
  reply.message = std::move(message);
  if (reply.message.empty()) return reply;
  if (reply.message[0] == kSuccess) {
    const auto values = onlyValues<1>(reply.message, 1);
    if (!values) return std::nullopt;
    reply.kind = FlutterReply::Kind::success;
    reply.value = (*values)[0];
    return reply;
  }
  if (reply.message[0] != kError) return std::nullopt;
  const auto values = onlyValues<3>(reply.message, 1);
  if (!values) return std::nullopt;
  const auto [code, text, details] = *values;
  if (!code.text() || (text.type() != FlutterType::null && !text.text())) return std::nullopt;
  reply.kind = FlutterReply::Kind::error;
  reply.errorCode = *code.text();
  reply.errorMessage = text.text();
  reply.errorDetails = details;
  return reply;
}

}  // namespace norvane
