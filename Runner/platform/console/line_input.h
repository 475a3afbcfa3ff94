#pragma once

#include <optional>
#include <string>

namespace norvane {

/// Splits what comes from a file descriptor into lines. Lines may carry secrets: what was taken is
/// wiped.
class LineInput {
 public:
  explicit LineInput(int fd) : fd_(fd) {}

  bool hasLine() const { return lineEnd_ != std::string::npos; }
  /// Whether the input has ended; a last line without a line break counts as one.
  bool ended() const { return ended_; }
  int fd() const { return fd_; }

  /// Reads what is there, waiting only if nothing is.
  void read();
  /// The next line without its line break. Only when there is one.
  std::string take();

 private:
  int fd_;
  bool ended_ = false;
  std::string buffer_;
  std::size_t start_ = 0;  // of what was not taken yet
  std::size_t lineEnd_ = std::string::npos;
};

}  // namespace norvane
