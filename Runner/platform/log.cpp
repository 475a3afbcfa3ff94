#include "platform/log.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace norvane {
namespace {

Log* installed = nullptr;

}  // namespace

ScopedLog::ScopedLog(Log& log) : previous_(installed) { installed = &log; }

ScopedLog::~ScopedLog() { installed = previous_; }

void NSLog(std::string_view text) {
  if (!installed) throw std::logic_error("no log is installed");
  installed->write(text);
}

void reportFault(std::string_view text) { NSLog("[Norvane] fault: " + std::string(text)); }

void fatalError(std::string_view message, std::string_view source) {
  NSLog(std::string(source) + ": Fatal error: " + std::string(message));
  std::abort();
}

}  // namespace norvane
