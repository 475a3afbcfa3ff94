#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "base/secure_memory.h"
#include "base/unique_function.h"

namespace norvane {

/// The one answer to one message. Used once, on the main thread: sent, or dropped on purpose. One
/// that is destroyed unused is a fault, reported and answered with "not implemented" (on the main
/// thread, wherever it was lost); a second answer is a fault, reported and not sent. Where the
/// engine is gone there is nobody to answer, and all of this does nothing.
class FlutterBinaryReply {
 public:
  /// Takes the answer to the UI; main thread.
  using Sink = UniqueFunction<void(Bytes)>;

  /// Allocates nothing: a message that has come is answered also when memory has run out.
  FlutterBinaryReply(std::shared_ptr<const std::string> channel, std::weak_ptr<const void> engine,
                     Sink sink);
  FlutterBinaryReply(FlutterBinaryReply&&) = default;
  FlutterBinaryReply& operator=(FlutterBinaryReply&&) = delete;
  ~FlutterBinaryReply();

  /// Empty bytes mean "not implemented".
  void send(Bytes reply);
  /// Leaves the message without an answer.
  void drop();

 private:
  std::shared_ptr<const std::string> channel_;
  std::weak_ptr<const void> engine_;
  Sink sink_;
};

/// Carries messages on named channels between the host and the UI program of one engine. Main
/// thread only.
class FlutterBinaryMessenger {
 public:
  using Handler = std::function<void(Bytes message, FlutterBinaryReply reply)>;
  /// Takes a message of the host to the UI program.
  using Outgoing = std::function<void(std::string_view channel, Bytes message)>;
  /// Hears when a channel is bound that was not, and when it is no longer.
  using Announcement = std::function<void(std::string_view channel, bool isBound)>;

  explicit FlutterBinaryMessenger(Outgoing outgoing, Announcement announcement = {})
      : outgoing_(std::move(outgoing)),
        announcement_(std::move(announcement)),
        engine_(std::make_shared<char>()) {}

  // The host's side

  /// Binds `channel`, in place of an earlier handler; an empty one unbinds it. A handler that is
  /// replaced, or whose engine ends, while it runs, runs to its end.
  void setMessageHandler(const std::string& channel, Handler handler);
  /// Sends without waiting for an answer.
  void send(std::string_view channel, Bytes message);
  /// The engine's last call: from now on nothing is sent, and open replies go nowhere. Every
  /// channel is announced as unbound.
  void engineEnded();

  // The UI's side

  /// Gives a message of the UI program to the channel's handler; without one the answer is "not
  /// implemented".
  void deliver(const std::string& channel, Bytes message, FlutterBinaryReply::Sink sink);

 private:
  struct Binding {
    std::string channel;
    Handler handler;
  };

  void announce(std::string_view channel, bool isBound) const;

  Outgoing outgoing_;
  Announcement announcement_;
  std::shared_ptr<const void> engine_;  // what open replies watch
  std::map<std::string, std::shared_ptr<const Binding>> bindings_;
};

}  // namespace norvane
