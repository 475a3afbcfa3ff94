#pragma once

#include <optional>
#include <string>
#include <vector>

namespace norvane {

/// What another program writes while the main loop turns; nothing when it fails.
std::optional<std::string> outputOf(std::vector<const char*> command);

}  // namespace norvane
