#pragma once

#include <cstddef>
#include <string_view>

#include "base/secure_memory.h"

namespace norvane {

/// Splits what comes from a file descriptor into lines. Lines may carry secrets: every copy of one
/// is wiped, and the memory of a long one given back, once it is gone.
class LineInput {
 public:
  explicit LineInput(int fd) : fd_(fd) {}

  bool hasLine() const { return lineEnd_ != std::string_view::npos; }
  /// Whether the input has ended; a last line without a line break counts as one.
  bool ended() const { return ended_; }
  int fd() const { return fd_; }

  /// Reads what is there, waiting only if nothing is.
  void read();
  /// The next line without its line break. Only when there is one.
  Bytes take();

 private:
  void findLine(std::size_t from);

  int fd_;
  bool ended_ = false;
  Bytes buffer_;
  std::size_t start_ = 0;  // of what was not taken yet
  std::size_t lineEnd_ = std::string_view::npos;
};

}  // namespace norvane
