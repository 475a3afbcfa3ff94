#include "platform/headless/console_state.h"

#include <string>
#include <variant>

#include "platform/console/json_members.h"
#include "platform/headless/headless_platform.h"

namespace norvane {
namespace {

void writeWindow(JsonWriter& writer, const HeadlessPlatform& host, const NSWindow& window) {
  const HeadlessWindow& native = host.desktop.nativeWindow(window);
  const NSRect frame = native.frame();
  writer.StartObject();
  member(writer, "class", window.className());
  member(writer, "visible", native.isVisible());
  member(writer, "key", host.application.isKey(window));
  member(writer, "frame", {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height});
  member(writer, "minSize", {native.minSize().width, native.minSize().height});
  member(writer, "styleMask", std::int64_t{native.styleMask()});
  member(writer, "level", std::int64_t{native.level()});
  member(writer, "autosaveName", window.frameAutosaveName());
  writer.EndObject();
}

void writeHotkey(JsonWriter& writer, const std::optional<Hotkey>& hotkey) {
  if (!hotkey) {
    writer.Null();
    return;
  }
  writer.StartObject();
  member(writer, "key", std::int64_t{hotkey->key});
  member(writer, "modifiers", std::int64_t{hotkey->modifiers});
  writer.EndObject();
}

void writeStatusItem(JsonWriter& writer, const HeadlessStatusBar::Item* item) {
  if (!item) {
    writer.Null();
    return;
  }
  const PixbufImage* image = item->image.get();
  writer.StartObject();
  member(writer, "image", image ? std::optional<std::string_view>(image->name()) : std::nullopt);
  if (image) {
    member(writer, "imageSize", {image->size().width, image->size().height});
  } else {
    member(writer, "imageSize", std::nullopt);
  }
  member(writer, "template", image && image->isTemplate());
  member(writer, "title", item->title);
  member(writer, "toolTip", item->toolTip);
  writer.EndObject();
}

void writePasteboardItem(JsonWriter& writer, const NSPasteboardItem& item) {
  writer.StartObject();
  for (const auto& [type, text] : item.types()) member(writer, type.c_str(), text);
  writer.EndObject();
}

void writeItem(JsonWriter& writer, const KeychainDirectory::Item& item) {
  writer.StartObject();
  member(writer, "service", item.name.service);
  member(writer, "account", item.name.account);
  member(writer, "accessGroup", std::optional<std::string_view>(item.name.accessGroup));
  member(writer, "accessible", item.accessible);
  member(writer, "synchronizable", item.synchronizable);
  // Its size, never its value: the output may be kept.
  member(writer, "bytes", static_cast<std::int64_t>(item.value.size()));
  writer.EndObject();
}

void writeIdentity(JsonWriter& writer, const ASPasswordCredentialIdentity& identity) {
  const bool isUrl = identity.serviceIdentifier.type == ASCredentialServiceIdentifier::Type::URL;
  writer.StartObject();
  member(writer, "recordIdentifier", identity.recordIdentifier);
  member(writer, "user", identity.user);
  member(writer, "service", identity.serviceIdentifier.identifier);
  member(writer, "type", isUrl ? "URL" : "domain");
  writer.EndObject();
}

void writeIdentity(JsonWriter& writer, const ASPasskeyCredentialIdentity& identity) {
  writer.StartObject();
  member(writer, "recordIdentifier", identity.recordIdentifier);
  member(writer, "relyingParty", identity.relyingPartyIdentifier);
  member(writer, "userName", identity.userName);
  base64Member(writer, "credentialID", identity.credentialID);
  base64Member(writer, "userHandle", identity.userHandle);
  writer.EndObject();
}

template <class List, class Write>
void list(JsonWriter& writer, const char* key, const List& elements, Write write) {
  writer.Key(key);
  writer.StartArray();
  for (const auto& element : elements) write(element);
  writer.EndArray();
}

}  // namespace

void writeState(JsonWriter& writer, HeadlessPlatform& host) {
  writer.StartObject();
  member(writer, "desktop", "state");
  list(writer, "windows", host.application.windows(),
       [&](const auto& window) { writeWindow(writer, host, *window); });
  member(writer, "active", host.desktop.isActive());
  member(writer, "frontApplication",
         std::optional<std::string_view>(host.desktop.frontApplication()));
  writer.Key("hotkey");
  writeHotkey(writer, host.hotkeys.registered());
  writer.Key("statusItem");
  writeStatusItem(writer, host.statusBar.item());
  list(writer, "pasteboard", host.pasteboard.items(),
       [&](const auto& item) { writePasteboardItem(writer, item); });
  member(writer, "secureInput", host.keyboard.isSecure());
  member(writer, "inputSource", std::optional<std::string_view>(host.keyboard.inputSource()));
  member(writer, "loginItem", static_cast<std::int64_t>(host.appService.status()));
  list(writer, "keychain", host.keychain.items(),
       [&](const auto& item) { writeItem(writer, item); });
  const auto writeEach = [&](const auto& identity) { writeIdentity(writer, identity); };
  host.credentialStore.inspect([&](CredentialIdentityDatabase& database) {
    list(writer, "passwordIdentities", database.passwords(), writeEach);
    list(writer, "passkeyIdentities", database.passkeys(), writeEach);
  });
  writer.Key("userDefaults");
  writer.StartObject();
  for (const auto& [key, value] : host.userDefaults.values()) {
    std::visit([&, &key = key](const auto& known) { member(writer, key.c_str(), known); }, value);
  }
  writer.EndObject();
  writer.EndObject();
}

}  // namespace norvane
