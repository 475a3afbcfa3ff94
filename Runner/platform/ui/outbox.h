#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

#include "base/secure_memory.h"

namespace norvane {

/// Messages of the host that wait, in their order, until the UI program runs. The oldest go when
/// there are more than 1,000 or 16 MB of them.
class Outbox {
 public:
  struct Message {
    std::string channel;
    Bytes bytes;
  };

  /// False when this was the first time that older ones had to go.
  bool add(std::string_view channel, Bytes message);
  bool isEmpty() const { return messages_.empty(); }
  Message takeOldest();

 private:
  std::deque<Message> messages_;
  std::size_t size_ = 0;  // in bytes
  bool overflowed_ = false;
};

}  // namespace norvane
