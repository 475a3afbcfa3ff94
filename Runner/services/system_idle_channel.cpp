#include "services/system_idle_channel.h"

#include <algorithm>
#include <limits>

#include "platform/cg_event_source.h"
#include "platform/platform.h"

namespace norvane {
namespace {

// Releases, modifiers alone and drags with other buttons are no activity of their own.
constexpr CGEventType kActivity[] = {
    kCGEventMouseMoved, kCGEventLeftMouseDown, kCGEventRightMouseDown,   kCGEventOtherMouseDown,
    kCGEventKeyDown,    kCGEventScrollWheel,   kCGEventLeftMouseDragged, kCGEventRightMouseDragged,
};

double idleSeconds() {
  double shortest = std::numeric_limits<double>::infinity();
  for (const CGEventType type : kActivity) {
    shortest = std::min(shortest, platform().eventSource.secondsSinceLastEventType(type));
  }
  return shortest;
}

}  // namespace

void handleSystemIdle(const FlutterMethodCall& call, FlutterResult result) {
  if (call.method() == "idleSeconds") {
    result(idleSeconds());
  } else {
    result(FlutterMethodNotImplemented);
  }
}

}  // namespace norvane
