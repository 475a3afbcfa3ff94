#pragma once

#include <string_view>

namespace norvane {

/// Where log records go. Any thread.
class Log {
 public:
  virtual ~Log() = default;

  /// Writes one record before it returns. `text` may hold anything, line breaks included: the sink
  /// escapes control characters, so that a record stays one line. One that cannot be written is
  /// lost without a word.
  virtual void write(std::string_view text) = 0;
};

/// Installs where NSLog writes for the life of this object, then the one before it again. `main`
/// makes one before anything else; a test makes its own.
class ScopedLog {
 public:
  explicit ScopedLog(Log& log);
  ~ScopedLog();
  ScopedLog(const ScopedLog&) = delete;
  ScopedLog& operator=(const ScopedLog&) = delete;

 private:
  Log* previous_;
};

/// Logs one record; by convention it begins "[Norvane] ". Never pass it anything of a vault's item.
void NSLog(std::string_view text);

/// Reports a fault of the program itself that its user should not feel (a reply given twice, a
/// handler that threw): one log record. Tests fail on any that they did not provoke.
void reportFault(std::string_view text);

/// Reports `message` with the part of the program that it comes from, and ends the process at once.
[[noreturn]] void fatalError(std::string_view message, std::string_view source);

}  // namespace norvane
