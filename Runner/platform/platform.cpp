#include "platform/platform.h"

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

}  // namespace norvane
