#include "platform/ui/outbox.h"

#include <utility>

namespace norvane {
namespace {

constexpr std::size_t kMostMessages = 1000;
constexpr std::size_t kMostBytes = 16U << 20U;

}  // namespace

bool Outbox::add(std::string_view channel, Bytes message) {
  size_ += message.size();
  messages_.push_back({std::string(channel), std::move(message)});
  if (messages_.size() <= kMostMessages && size_ <= kMostBytes) return true;
  while (messages_.size() > kMostMessages || size_ > kMostBytes) takeOldest();
  return std::exchange(overflowed_, true);
}

Outbox::Message Outbox::takeOldest() {
  Message oldest = std::move(messages_.front());
  messages_.pop_front();
  size_ -= oldest.bytes.size();
  return oldest;
}

}  // namespace norvane
