#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace norvane {

/// One combination to try: its display label, Carbon modifier mask and virtual key code.
struct HotkeyChainEntry {
  std::string_view label;
  std::uint32_t mods;
  std::uint32_t key;
};

/// The label of the table's first row, the one that "auto" hopes for.
std::string_view firstHotkeyLabel();

/// The combinations to try for `choice`, in order: with "auto" the table's own, the ones that
/// 1Password uses last while it runs; with a row's code that row first.
std::vector<HotkeyChainEntry> hotkeyCandidates(std::string_view choice);

bool onePasswordIsRunning();

}  // namespace norvane
