#pragma once

#include <functional>
#include <memory>

#include "platform/carbon_events.h"

namespace norvane {

class Dispatch;
class EventTime;

/// The hotkeys of the session: the X server's, or on a Wayland session the desktop portal's, where
/// a grab of the X server would be granted and see nothing. The portal's first answer calls
/// `portalAnswered`, on the main thread. Made after the toolkit is initialised.
std::unique_ptr<CarbonEventManager> makeHotkeys(EventTime& eventTime, Dispatch& dispatch,
                                                std::function<void()> portalAnswered);

}  // namespace norvane
