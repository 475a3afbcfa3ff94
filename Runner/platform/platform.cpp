#include "platform/platform.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "platform/dispatch.h"
#include "platform/log.h"

namespace norvane {
namespace {

const Platform* installed = nullptr;

}  // namespace

const Platform& platform() {
  if (!installed) throw std::logic_error("no platform is installed");
  return *installed;
}

ScopedPlatform::ScopedPlatform(const Platform& platform) : previous_(installed) {
  installed = &platform;
}

ScopedPlatform::~ScopedPlatform() { installed = previous_; }

void requireMainThread(const char* operation) {
  if (platform().dispatch.isMainThread()) return;
  fatalError(std::string(operation) + " off the main thread", "Dispatch");
}

void NSLog(std::string_view text) { platform().log.write(text); }

void reportFault(std::string_view text) { NSLog("[Norvane] fault: " + std::string(text)); }

void fatalError(std::string_view message, std::string_view source) {
  NSLog(std::string(source) + ": Fatal error: " + std::string(message));
  std::abort();
}

}  // namespace norvane
