#include "platform/console/line_input.h"

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace norvane {

void LineInput::read() {
  constexpr std::size_t kStep = 64 * 1024;
  if (start_ > 0) {
    // Into a block of its own: moved to the front, it would stay where it was as well.
    Bytes rest;
    rest.reserve(buffer_.size() - start_ + kStep);
    rest.insert(rest.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_), buffer_.end());
    buffer_ = std::move(rest);
    start_ = 0;
  }
  const std::size_t size = buffer_.size();
  buffer_.resize(size + kStep);
  ssize_t got = 0;
  do {
    got = ::read(fd_, buffer_.data() + size, kStep);
  } while (got < 0 && errno == EINTR);
  buffer_.resize(size + (got > 0 ? static_cast<std::size_t>(got) : 0));
  if (got <= 0) {
    ended_ = true;
    if (!buffer_.empty()) buffer_.push_back('\n');
  }
  findLine(size);  // what was there before holds no line break, or it would have been taken first
}

Bytes LineInput::take() {
  Bytes line;
  const bool isAll = start_ == 0 && lineEnd_ + 1 == buffer_.size();
  if (isAll) {  // as nearly always: whoever sends a long one waits for the answer
    line = std::exchange(buffer_, {});
    line.pop_back();
  } else {
    std::uint8_t* const begin = buffer_.data() + start_;
    line.assign(begin, buffer_.data() + lineEnd_);
    secureWipe(begin, line.size());
    start_ = lineEnd_ + 1;
    if (start_ == buffer_.size()) {
      buffer_ = {};
      start_ = 0;
    }
  }
  findLine(start_);
  return line;
}

void LineInput::findLine(std::size_t from) {
  const std::string_view text(reinterpret_cast<const char*>(buffer_.data()), buffer_.size());
  lineEnd_ = text.find('\n', from);
}

}  // namespace norvane
