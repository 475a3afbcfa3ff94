#include "platform/explorer/traffic.h"

#include <utility>

#include "platform/explorer/channel_table.h"

namespace norvane {
namespace {

constexpr std::size_t kMostEntries = 1000;
constexpr std::size_t kMostKept = 16 << 20;    // bytes of messages in all
constexpr std::size_t kMostMessage = 1 << 20;  // a larger one is only counted

std::size_t keptOf(const TrafficEntry& entry) {
  return (entry.call ? entry.call->size() : 0) + (entry.reply ? entry.reply->message.size() : 0);
}

}  // namespace

bool TrafficEntry::isSecret() const {
  if (kind != Kind::uiCalls) return false;
  const MethodInfo* method = methodInfo(channel, name);
  return !method || method->isSecret;
}

Traffic::Traffic(ScriptedUi& ui) : ui_(ui) { ui_.addObserver(*this); }

Traffic::~Traffic() { ui_.removeObserver(*this); }

TrafficEntry* Traffic::entry(std::uint64_t number) {
  if (entries_.empty() || number < entries_.front().number) return nullptr;
  const std::uint64_t at = number - entries_.front().number;
  return at < entries_.size() ? &entries_[at] : nullptr;
}

void Traffic::clear() {
  while (!entries_.empty()) removeOldest();
}

void Traffic::started(std::string_view engine, std::string_view entrypoint) {
  add(entryOf(TrafficEntry::Kind::started, engine, entrypoint));
}

void Traffic::pluginRegistered(std::string_view engine, std::string_view name) {
  add(entryOf(TrafficEntry::Kind::plugin, engine, name));
}

void Traffic::called(std::string_view engine, std::string_view channel, const Bytes& message) {
  add(entryOf(TrafficEntry::Kind::hostCalls, engine, channel, message));
}

void Traffic::sent(std::uint64_t number, std::string_view engine, std::string_view channel,
                   const Bytes& message) {
  open_[number] = added_ + 1;
  add(entryOf(TrafficEntry::Kind::uiCalls, engine, channel, message));
}

void Traffic::answered(std::uint64_t number, const Bytes& reply) {
  const auto open = open_.extract(number);
  TrafficEntry* const call = open ? entry(open.mapped()) : nullptr;
  if (!call) return;
  call->duration = std::chrono::steady_clock::now() - call->begin;
  call->reply = decodeEnvelope(reply);
  if (call->reply) kept_ += reply.size();
  if (listener_) listener_->answered(*call);
}

TrafficEntry Traffic::entryOf(TrafficEntry::Kind kind, std::string_view engine,
                              std::string_view name) {
  TrafficEntry entry;
  entry.when = std::chrono::system_clock::now();
  entry.begin = std::chrono::steady_clock::now();
  entry.kind = kind;
  entry.engine = engine;
  entry.name = name;
  return entry;
}

TrafficEntry Traffic::entryOf(TrafficEntry::Kind kind, std::string_view engine,
                              std::string_view channel, const Bytes& message) {
  auto call = decodeMethodCall(message);
  TrafficEntry entry = entryOf(kind, engine, call ? call->method() : "(undecodable)");
  entry.channel = channel;
  entry.size = message.size();
  if (call && message.size() <= kMostMessage) entry.call = std::move(call);
  return entry;
}

void Traffic::add(TrafficEntry entry) {
  entry.number = ++added_;
  kept_ += keptOf(entry);
  entries_.push_back(std::move(entry));
  if (listener_) listener_->added(entries_.back());
  while (entries_.size() > kMostEntries || kept_ > kMostKept) removeOldest();
}

void Traffic::removeOldest() {
  kept_ -= keptOf(entries_.front());
  entries_.pop_front();
  if (listener_) listener_->removedOldest();
}

}  // namespace norvane
