#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace norvane {

/// Decodes standard base64 (RFC 4648, section 4) whose padding may be missing. Strict otherwise:
/// any other character makes it fail, white space and the URL-safe alphabet included.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

}  // namespace norvane
