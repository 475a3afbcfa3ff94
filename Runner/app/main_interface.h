#pragma once

#include "platform/ns_application.h"

namespace norvane {

/// What the application's main interface file describes: the delegate and the main window.
MainInterface mainInterface();

}  // namespace norvane
