#pragma once

#include "platform/linux/json.h"

namespace norvane {

struct HeadlessPlatform;

/// The console's state line: everything of the simulated desktop and of the disk that a person
/// could look up, and no key.
void writeState(JsonWriter& writer, HeadlessPlatform& host);

}  // namespace norvane
