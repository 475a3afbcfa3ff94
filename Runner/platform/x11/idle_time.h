#pragma once

#include <chrono>
#include <memory>

#include "platform/cg_event_source.h"
#include "platform/x11/x11_event_filter.h"

namespace norvane {

/// The time since the person's last input, of whatever kind: the desktops do not tell kinds apart,
/// so that every type of event has the same answer.
///
/// Asked are, in this order: the X server (but not on a Wayland session, where it does not see all
/// input), then, on the session bus, the desktop's idle monitor and its screen saver. When nobody
/// can tell, the answer is the time since this application itself last had input or was started:
/// never shorter than the truth, so that what is to be locked when the person is away gets locked,
/// though perhaps also while they work elsewhere. Main thread; made after the toolkit is
/// initialised.
class IdleTime : public CGEventSource {
 public:
  IdleTime();
  ~IdleTime() override;

  double secondsSinceLastEventType(CGEventType type) const override;

 private:
  using Clock = std::chrono::steady_clock;
  class BusSource;

  Clock::time_point lastSeen_ = Clock::now();
  X11EventFilter filter_;
  std::unique_ptr<BusSource> idleMonitor_;
  std::unique_ptr<BusSource> screenSaver_;
};

}  // namespace norvane
