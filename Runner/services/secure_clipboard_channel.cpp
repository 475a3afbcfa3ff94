#include "services/secure_clipboard_channel.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ns_pasteboard.h"
#include "platform/platform.h"

namespace norvane {
namespace {

// Markers by which clipboard histories know what they must leave alone (nspasteboard.org). They are
// empty: the text itself stands under the plain text type only.
constexpr const char* kConcealedType = "org.nspasteboard.ConcealedType";
constexpr const char* kTransientType = "org.nspasteboard.TransientType";

std::optional<std::string_view> textOf(FlutterValueView arguments) {
  const auto map = arguments.textKeyedMap();
  return map ? (*map)["text"].text() : std::nullopt;
}

}  // namespace

void handleSecureClipboard(const FlutterMethodCall& call, FlutterResult result) {
  if (call.method() != "setConcealed") {
    result(FlutterMethodNotImplemented);
    return;
  }
  const auto text = textOf(call.arguments());
  if (!text) {
    result(FlutterError{"bad_args", "expect {text}", {}});
    return;
  }
  NSPasteboard& pasteboard = platform().pasteboard;
  pasteboard.clearContents();
  NSPasteboardItem item;
  item.setString(*text, NSPasteboardTypeString);
  item.setString("", kConcealedType);
  item.setString("", kTransientType);
  std::vector<NSPasteboardItem> items;
  items.push_back(std::move(item));
  pasteboard.writeObjects(std::move(items));
  result(nullptr);
}

}  // namespace norvane
