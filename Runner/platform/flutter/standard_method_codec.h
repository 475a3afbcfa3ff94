#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/secure_memory.h"
#include "platform/flutter/flutter_value.h"
#include "platform/flutter/flutter_value_view.h"

namespace norvane {

/// An error reply. No message and an empty message are two things.
struct FlutterError {
  std::string code;
  std::optional<std::string> message;
  FlutterValue details;
};

/// The reply to a method that a channel does not know.
struct FlutterMethodNotImplementedReply {};
inline constexpr FlutterMethodNotImplementedReply FlutterMethodNotImplemented;

/// A received call. It owns the message, which may hold secrets, wipes it when freed, and may be
/// moved to another thread; `method` and `arguments` look into it.
class FlutterMethodCall {
 public:
  std::string_view method() const { return method_; }
  /// Null when the UI gave none.
  FlutterValueView arguments() const { return arguments_; }

  /// Of the message, in bytes.
  std::size_t size() const { return message_.size(); }

  FlutterMethodCall(FlutterMethodCall&&) = default;
  FlutterMethodCall& operator=(FlutterMethodCall&&) = default;

 private:
  friend std::optional<FlutterMethodCall> decodeMethodCall(Bytes message);
  explicit FlutterMethodCall(Bytes message) : message_(std::move(message)) {}

  Bytes message_;
  std::string_view method_;
  FlutterValueView arguments_;
};

/// A received reply; it owns the message that its views look into.
struct FlutterReply {
  FlutterReply() = default;
  FlutterReply(FlutterReply&&) = default;  // a copy's views would look into the original
  FlutterReply& operator=(FlutterReply&&) = default;

  enum class Kind { success, error, notImplemented };

  Bytes message;
  Kind kind = Kind::notImplemented;
  FlutterValueView value;                        ///< of a success
  std::string_view errorCode;                    ///< of an error
  std::optional<std::string_view> errorMessage;  ///< of an error
  FlutterValueView errorDetails;                 ///< of an error
};

// The standard method codec: a call is the method's name and the arguments; a reply is an envelope,
// empty when the method is not implemented.

Bytes encodeMethodCall(std::string_view method, const FlutterValue& arguments);
/// Nothing when `message` is not one well-formed call and nothing else.
std::optional<FlutterMethodCall> decodeMethodCall(Bytes message);

Bytes encodeSuccessEnvelope(const FlutterValue& value);
Bytes encodeErrorEnvelope(const FlutterError& error);
/// Nothing when `message` is neither empty nor one well-formed envelope.
std::optional<FlutterReply> decodeEnvelope(Bytes message);

}  // namespace norvane
