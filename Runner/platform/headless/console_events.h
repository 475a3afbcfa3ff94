#pragma once

#include <string>

#include "platform/linux/json.h"

namespace norvane {

struct HeadlessPlatform;

/// Carries out what the person, another application or the system does, by the console's names for
/// it. `arguments` are the line's other members; the answer to "state" goes to `answer`. Throws
/// JsonError, with nothing changed, for an event that does not exist or cannot happen now.
void carryOutDesktopEvent(const std::string& event, JsonValue& arguments, JsonWriter& answer,
                          HeadlessPlatform& host);

}  // namespace norvane
