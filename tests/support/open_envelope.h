#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace norvane {

/// What a sealed envelope holds; nothing when it does not open.
std::optional<std::string> openEnvelope(std::span<const std::uint8_t> key,
                                        std::string_view envelope);

}  // namespace norvane
