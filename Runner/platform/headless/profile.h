#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/json.h"
#include "platform/ns_process_info.h"

namespace norvane {

/// A key combination: Carbon key code and modifier mask.
struct Hotkey {
  std::uint32_t key = 0;
  std::uint32_t modifiers = 0;
  bool operator==(const Hotkey&) const = default;
};

/// What the simulated desktop is like; docs/console.md describes the keys.
struct Profile {
  struct Screen {
    NSRect
        visibleFrame;  ///< without menu bar and dock; all of the screen when nothing else is said
  };
  /// Another running application.
  struct Application {
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> name;
    bool icon = false;
    bool active = false;  ///< in front; at most one is
  };
  struct CredentialStore {
    bool isEnabled = true;
    bool supportsIncrementalUpdates = true;
    bool success = true;
    std::optional<std::string> error;  ///< fails each operation
  };
  struct LoginItem {
    std::optional<std::int32_t> status;  ///< instead of the one on disk
    std::optional<std::string> error;    ///< fails each change
  };
  /// The status that each call of the keychain answers with, changing nothing.
  struct KeychainStatuses {
    std::optional<std::int32_t> update;
    std::optional<std::int32_t> add;
    std::optional<std::int32_t> remove;
  };

  NSOperatingSystemVersion osVersion{14, 0, 0};
  std::vector<Screen> screens{{{{0, 0}, {1440, 875}}}};
  std::vector<Application> applications{{"org.example.editor", "Editor", true, true}};
  std::vector<Hotkey> takenHotkeys;      ///< held by other applications
  std::int32_t hotkeyHandlerStatus = 0;  ///< what installing the hotkey handler answers
  std::vector<std::string> inputSources{"com.example.keylayout.Pinyin",
                                        "com.example.keylayout.ABC"};  ///< the first is current
  std::optional<std::string> asciiInputSource = "com.example.keylayout.ABC";
  std::optional<std::string> appIdentifierPrefix = "TEAM123456";  ///< of the Info dictionary
  bool appGroup = true;                                           ///< has an app-group container
  bool icloud = true;                                             ///< has an iCloud container
  CredentialStore credentialStore;
  KeychainStatuses keychain;
  LoginItem loginItem;
  bool random = true;             ///< the random source works
  bool menuBarIcon = true;        ///< the image resource exists
  bool symbols = true;            ///< the system's symbols exist
  bool mainWindow = true;         ///< the main interface file makes the main window
  bool mainWindowVisible = true;  ///< and puts it on screen
};

/// Replaces the members of `profile` that `changes` names; `changes` must be an object. Throws
/// JsonError, with nothing replaced, for a key or a value that a profile cannot have.
void applyToProfile(const JsonValue& changes, Profile& profile);

Profile::Application parseApplication(const JsonValue& value);

/// The four numbers of [x, y, width, height].
NSRect parseRect(const JsonValue& value, const std::string& what);

}  // namespace norvane
