#include "platform/headless/console_events.h"

#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/headless/console_state.h"
#include "platform/headless/headless_platform.h"

namespace norvane {
namespace {

/// One event: the members that its line has, and what happens.
struct Event {
  std::vector<std::string_view> members;
  void (*carryOut)(const JsonValue& line, JsonWriter& answer, HeadlessPlatform& host);
};

std::string textMember(const JsonValue& line, const char* key) {
  return expectText(require(line, key), '"' + std::string(key) + '"');
}

std::uint32_t codeMember(const JsonValue& line, const char* key) {
  return expectCode(require(line, key), '"' + std::string(key) + '"');
}

void expectPossible(bool happened, const std::string& otherwise) {
  if (!happened) throw JsonError(otherwise);
}

const std::map<std::string, Event>& events() {
  static const std::map<std::string, Event> table{
      {"openURL",
       {{"url"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          const JsonValue& url = require(line, "url");
          host.application.openURL(url.IsNull() ? std::nullopt
                                                : std::optional(textMember(line, "url")));
        }}},
      {"pressKeys",
       {{"key", "modifiers"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          host.hotkeys.press({codeMember(line, "key"), codeMember(line, "modifiers")});
        }}},
      {"clickStatusItem",
       {{},
        [](const JsonValue&, JsonWriter&, HeadlessPlatform& host) {
          expectPossible(host.statusBar.click(), "there is no status item to click");
        }}},
      {"closeWindow",
       {{},
        [](const JsonValue&, JsonWriter&, HeadlessPlatform& host) {
          expectPossible(host.desktop.closeMainWindow(), "the main window is not on screen");
        }}},
      {"resizeWindow",
       {{"frame"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          const NSRect frame = parseRect(require(line, "frame"), "\"frame\"");
          expectPossible(host.desktop.resizeMainWindow(frame), "the main window is not on screen");
        }}},
      {"reopen",
       {{},
        [](const JsonValue&, JsonWriter&, HeadlessPlatform& host) { host.application.reopen(); }}},
      {"activate",
       {{"application"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          expectPossible(host.desktop.activate(textMember(line, "application")),
                         "no such application is running");
        }}},
      {"launch",
       {{"application"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          host.desktop.launchApplication(parseApplication(require(line, "application")));
        }}},
      {"terminate",
       {{"application"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          expectPossible(host.desktop.terminateApplication(textMember(line, "application")),
                         "no such application is running");
        }}},
      {"copy",
       {{"text"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          host.pasteboard.copy(textMember(line, "text"));
        }}},
      {"selectInputSource",
       {{"id"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          expectPossible(host.keyboard.select(textMember(line, "id")), "no such input source");
        }}},
      {"state",
       {{},
        [](const JsonValue&, JsonWriter& answer, HeadlessPlatform& host) {
          writeState(answer, host);
        }}},
      {"input",
       {{"type"},
        [](const JsonValue& line, JsonWriter&, HeadlessPlatform& host) {
          host.eventSource.input(codeMember(line, "type"));
        }}},
  };
  return table;
}

}  // namespace

void carryOutDesktopEvent(const std::string& event, JsonValue& arguments, JsonWriter& answer,
                          HeadlessPlatform& host) {
  if (event == "set") {
    arguments.RemoveMember("id");
    Profile profile = host.profile.copy();
    applyToProfile(arguments, profile);
    host.setProfile(profile);
    return;
  }
  const auto found = events().find(event);
  if (found == events().end()) throw JsonError("unknown desktop event \"" + event + "\"");
  auto members = found->second.members;
  members.emplace_back("id");  // any line may have one
  expectOnly(arguments, members);
  found->second.carryOut(arguments, answer, host);
}

}  // namespace norvane
