#include "services/hotkey_candidates.h"

#include <algorithm>
#include <array>

#include "platform/carbon_events.h"
#include "platform/log.h"
#include "platform/ns_workspace.h"
#include "platform/platform.h"

namespace norvane {
namespace {

/// One row of the table.
struct HotkeyCandidate {
  std::string_view label;
  std::string_view code;
  std::uint32_t mods;
  std::uint32_t key;
};

constexpr std::array<HotkeyCandidate, 8> hotkeyCandidateTable{{
    {"⌘\\", "cmd-backslash", cmdKey, kVK_ANSI_Backslash},
    {"⌘⇧\\", "cmd-shift-backslash", cmdKey | shiftKey, kVK_ANSI_Backslash},
    {"⌃⌥\\", "ctrl-opt-backslash", controlKey | optionKey, kVK_ANSI_Backslash},
    {"⌃⌥⌘O", "ctrl-opt-cmd-o", controlKey | optionKey | cmdKey, kVK_ANSI_O},
    {"⌘⇧Space", "cmd-shift-space", cmdKey | shiftKey, kVK_Space},
    {"⌥⇧Space", "opt-shift-space", optionKey | shiftKey, kVK_Space},
    {"⌃⌥Space", "ctrl-opt-space", controlKey | optionKey, kVK_Space},
    {"⌃⌥⌘\\", "ctrl-opt-cmd-bsl", controlKey | optionKey | cmdKey, kVK_ANSI_Backslash},
}};

constexpr std::array<std::string_view, 2> onePasswordShadowedCodes{"cmd-backslash",
                                                                   "cmd-shift-space"};

constexpr std::array<std::string_view, 3> onePasswordBundleIdentifiers{
    "com.1password.1password", "com.agilebits.onepassword7", "com.agilebits.onepassword-osx"};

template <class Texts>
bool contains(const Texts& texts, std::string_view text) {
  return std::ranges::find(texts, text) != texts.end();
}

}  // namespace

std::string_view firstHotkeyLabel() { return hotkeyCandidateTable.front().label; }

bool onePasswordIsRunning() {
  const auto applications = platform().workspace.runningApplications();
  return std::ranges::any_of(applications, [](const NSRunningApplication& application) {
    return application.bundleIdentifier &&
           contains(onePasswordBundleIdentifiers, *application.bundleIdentifier);
  });
}

std::vector<HotkeyChainEntry> hotkeyCandidates(std::string_view choice) {
  auto rows = hotkeyCandidateTable;
  const auto putFirst = [&](auto isFirst) {
    std::stable_partition(rows.begin(), rows.end(), isFirst);
  };
  if (choice != "auto") {
    putFirst([&](const HotkeyCandidate& row) { return row.code == choice; });
  } else if (onePasswordIsRunning()) {
    putFirst(
        [](const HotkeyCandidate& row) { return !contains(onePasswordShadowedCodes, row.code); });
    NSLog("[Norvane] 1Password 运行中 — ⌘\\ / ⌘⇧Space 降级到候选链尾");
  }
  std::vector<HotkeyChainEntry> chain;
  chain.reserve(rows.size());
  for (const HotkeyCandidate& row : rows) chain.push_back({row.label, row.mods, row.key});
  return chain;
}

}  // namespace norvane
