#include "platform/console/line_input.h"

#include <cerrno>
#include <utility>

#include <unistd.h>

#include "base/secure_memory.h"

namespace norvane {

void LineInput::read() {
  constexpr std::size_t kStep = 64 * 1024;
  buffer_.erase(0, std::exchange(start_, 0));
  const std::size_t size = buffer_.size();
  buffer_.resize(size + kStep);
  ssize_t got = 0;
  do {
    got = ::read(fd_, buffer_.data() + size, kStep);
  } while (got < 0 && errno == EINTR);
  buffer_.resize(size + (got > 0 ? static_cast<std::size_t>(got) : 0));
  if (got <= 0) {
    ended_ = true;
    if (start_ < buffer_.size()) buffer_ += '\n';
  }
  // What was there before holds no line break, or it would have been taken first.
  lineEnd_ = buffer_.find('\n', size);
}

std::string LineInput::take() {
  std::string line = buffer_.substr(start_, lineEnd_ - start_);
  secureWipe(buffer_.data() + start_, line.size());
  start_ = lineEnd_ + 1;
  if (start_ == buffer_.size()) {
    buffer_.clear();
    start_ = 0;
  }
  lineEnd_ = buffer_.find('\n', start_);
  return line;
}

}  // namespace norvane
