#include "platform/headless/profile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <utility>

namespace norvane {
namespace {

using Member = std::function<void(const JsonValue& value, const std::string& what)>;
using Members = std::map<std::string, Member, std::less<>>;

/// Hands each member of an object to what reads it.
void readMembers(const JsonValue& object, const std::string& what, const Members& members) {
  for (const auto& [name, value] : expectObject(object, what).GetObject()) {
    const auto found = members.find(textOf(name));
    if (found == members.end()) {
      throw JsonError(what + " has no key \"" + std::string(textOf(name)) + "\"");
    }
    found->second(value, "\"" + found->first + "\"");
  }
}

Member booleanInto(bool& target) {
  return [&target](const JsonValue& value, const std::string& what) {
    target = expectBoolean(value, what);
  };
}

Member optionalTextInto(std::optional<std::string>& target) {
  return [&target](const JsonValue& value, const std::string& what) {
    target = value.IsNull() ? std::nullopt : std::optional(expectText(value, what));
  };
}

Member optionalStatusInto(std::optional<std::int32_t>& target) {
  return [&target](const JsonValue& value, const std::string& what) {
    if (!value.IsNull() && !value.IsInt()) throw JsonError(what + " must be a status or null");
    target = value.IsNull() ? std::nullopt : std::optional(value.GetInt());
  };
}

/// An object that is replaced whole, by one whose members `members` reads.
template <class Object>
Member objectInto(Object& target, Members (*members)(Object& object)) {
  return [&target, members](const JsonValue& value, const std::string& what) {
    Object object;
    readMembers(value, what, members(object));
    target = std::move(object);
  };
}

Hotkey parseHotkey(const JsonValue& value) {
  const std::string what = "a hotkey";
  if (expectArray(value, what).Size() != 2) throw JsonError(what + " must be [key, modifiers]");
  return {expectCode(value[0], what), expectCode(value[1], what)};
}

Member rectInto(NSRect& target) {
  return [&target](const JsonValue& value, const std::string& what) {
    target = parseRect(value, what);
  };
}

/// A list whose elements `parse` reads.
template <class Element>
Member listInto(std::vector<Element>& target, Element (*parse)(const JsonValue&)) {
  return [&target, parse](const JsonValue& value, const std::string& what) {
    std::vector<Element> elements;
    for (const JsonValue& element : expectArray(value, what).GetArray()) {
      elements.push_back(parse(element));
    }
    target = std::move(elements);
  };
}

NSOperatingSystemVersion parseVersion(const JsonValue& value, const std::string& what) {
  const std::string text = expectText(value, what);
  NSOperatingSystemVersion version;
  const char* at = text.data();
  const char* const end = at + text.size();
  for (int* number : {&version.majorVersion, &version.minorVersion, &version.patchVersion}) {
    const auto [next, error] = std::from_chars(at, end, *number);
    if (error != std::errc() || *number < 0) break;
    if (next == end) return version;
    if (*next != '.') break;
    at = next + 1;
  }
  throw JsonError(what + " must be a version such as \"14.0.0\"");
}

std::string parseIdentifier(const JsonValue& value) { return expectText(value, "an identifier"); }

Profile::Screen parseScreen(const JsonValue& value) {
  NSRect frame;
  std::optional<NSRect> visibleFrame;
  readMembers(value, "a screen",
              {{"frame", rectInto(frame)},
               {"visibleFrame", [&](const JsonValue& rect, const std::string& what) {
                  visibleFrame = parseRect(rect, what);
                }}});
  return {.visibleFrame = visibleFrame.value_or(frame)};
}

Members membersOf(Profile::CredentialStore& store) {
  return {{"isEnabled", booleanInto(store.isEnabled)},
          {"supportsIncrementalUpdates", booleanInto(store.supportsIncrementalUpdates)},
          {"success", booleanInto(store.success)},
          {"error", optionalTextInto(store.error)}};
}

Members membersOf(Profile::KeychainStatuses& statuses) {
  return {{"update", optionalStatusInto(statuses.update)},
          {"add", optionalStatusInto(statuses.add)},
          {"delete", optionalStatusInto(statuses.remove)}};
}

Members membersOf(Profile::LoginItem& item) {
  return {{"status", optionalStatusInto(item.status)}, {"error", optionalTextInto(item.error)}};
}

}  // namespace

Profile::Application parseApplication(const JsonValue& value) {
  Profile::Application application;
  readMembers(value, "an application",
              {{"bundleIdentifier", optionalTextInto(application.bundleIdentifier)},
               {"name", optionalTextInto(application.name)},
               {"icon", booleanInto(application.icon)},
               {"active", booleanInto(application.active)}});
  return application;
}

NSRect parseRect(const JsonValue& value, const std::string& what) {
  if (expectArray(value, what).Size() != 4)
    throw JsonError(what + " must be [x, y, width, height]");
  constexpr double kLargest = 1e9;  // beyond that no point is a place on a desktop
  const auto number = [&](rapidjson::SizeType i) {
    const double coordinate = expectNumber(value[i], what);
    if (std::abs(coordinate) > kLargest) throw JsonError(what + " is too large");
    return coordinate;
  };
  const NSRect rect{{number(0), number(1)}, {number(2), number(3)}};
  if (rect.size.width < 0 || rect.size.height < 0) throw JsonError(what + " has a negative size");
  return rect;
}

void applyToProfile(const JsonValue& changes, Profile& profile) {
  Profile changed = profile;  // a line that is refused half way has changed nothing
  readMembers(
      changes, "the profile",
      {
          {"osVersion", [&](const auto& value,
                            const auto& what) { changed.osVersion = parseVersion(value, what); }},
          {"screens", listInto(changed.screens, parseScreen)},
          {"applications", listInto(changed.applications, parseApplication)},
          {"takenHotkeys", listInto(changed.takenHotkeys, parseHotkey)},
          {"hotkeyHandlerStatus",
           [&](const auto& value, const auto& what) {
             if (!value.IsInt()) throw JsonError(what + " must be a status");
             changed.hotkeyHandlerStatus = value.GetInt();
           }},
          {"menuBarIcon", booleanInto(changed.menuBarIcon)},
          {"symbols", booleanInto(changed.symbols)},
          {"appIdentifierPrefix", optionalTextInto(changed.appIdentifierPrefix)},
          {"appGroup", booleanInto(changed.appGroup)},
          {"credentialStore", objectInto(changed.credentialStore, membersOf)},
          {"keychain", objectInto(changed.keychain, membersOf)},
          {"inputSources", listInto(changed.inputSources, parseIdentifier)},
          {"asciiInputSource", optionalTextInto(changed.asciiInputSource)},
          {"icloud", booleanInto(changed.icloud)},
          {"loginItem", objectInto(changed.loginItem, membersOf)},
          {"random", booleanInto(changed.random)},
          {"mainWindow", booleanInto(changed.mainWindow)},
          {"mainWindowVisible", booleanInto(changed.mainWindowVisible)},
      });
  const auto isActive = [](const Profile::Application& application) { return application.active; };
  if (std::ranges::count_if(changed.applications, isActive) > 1) {
    throw JsonError("\"applications\" has more than one that is active");
  }
  profile = std::move(changed);
}

}  // namespace norvane
