#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/console/scripted_ui.h"
#include "platform/flutter/standard_method_codec.h"

namespace norvane {

/// One thing that passed between the host and the UI programs. It owns its messages, which may hold
/// secrets and are wiped with it.
struct TrafficEntry {
  enum class Kind { started, plugin, uiCalls, hostCalls };

  std::uint64_t number = 0;  ///< counts up by one
  std::chrono::system_clock::time_point when;
  Kind kind = Kind::started;
  std::string engine;
  std::string channel;                    ///< of a call
  std::string name;                       ///< the method, the plugin or the entry point
  std::size_t size = 0;                   ///< of the call's message, in bytes
  std::optional<FlutterMethodCall> call;  ///< none when it is too large to be kept
  std::optional<FlutterReply> reply;      ///< none while there is none
  std::chrono::nanoseconds duration{};    ///< until the reply
  std::chrono::steady_clock::time_point begin;

  /// Whether its arguments may be seen before anybody asks for them: those of methods that are not
  /// known to be harmless may not.
  bool isSecret() const;
};

/// Hears what happens to the traffic, afterwards.
class TrafficListener {
 public:
  virtual ~TrafficListener() = default;
  virtual void added(const TrafficEntry& entry) = 0;
  virtual void answered(const TrafficEntry& entry) = 0;
  virtual void removedOldest() = 0;
};

/// The latest of what passes between the host and all UI programs, whoever plays them. Main thread.
class Traffic : public UiObserver {
 public:
  explicit Traffic(ScriptedUi& ui);
  ~Traffic() override;

  /// At most one; it takes the place of another.
  void setListener(TrafficListener& listener) { listener_ = &listener; }
  void removeListener(const TrafficListener& listener) {
    if (listener_ == &listener) listener_ = nullptr;
  }
  const std::deque<TrafficEntry>& entries() const { return entries_; }
  /// Null when it is there no longer.
  TrafficEntry* entry(std::uint64_t number);
  void clear();

  void started(std::string_view engine, std::string_view entrypoint) override;
  void pluginRegistered(std::string_view engine, std::string_view name) override;
  void called(std::string_view engine, std::string_view channel, const Bytes& message) override;
  void sent(std::uint64_t number, std::string_view engine, std::string_view channel,
            const Bytes& message) override;
  void answered(std::uint64_t number, const Bytes& reply) override;

 private:
  TrafficEntry entryOf(TrafficEntry::Kind kind, std::string_view engine, std::string_view name);
  TrafficEntry entryOf(TrafficEntry::Kind kind, std::string_view engine, std::string_view channel,
                       const Bytes& message);
  void add(TrafficEntry entry);
  void removeOldest();

  ScriptedUi& ui_;
  TrafficListener* listener_ = nullptr;
  std::deque<TrafficEntry> entries_;
  std::uint64_t added_ = 0;
  std::size_t kept_ = 0;                         // bytes of messages
  std::map<std::uint64_t, std::uint64_t> open_;  // messages without an answer, and their entries
};

}  // namespace norvane
