#include "platform/gtk/gtk_pasteboard.h"

#include <algorithm>
#include <memory>

#include <gtk/gtk.h>

#include "base/secure_memory.h"

namespace norvane {
namespace {

constexpr const char* kConcealedType = "org.nspasteboard.ConcealedType";
// By this the history of KDE knows what it must not keep.
constexpr const char* kPasswordHint = "x-kde-passwordManagerHint";

/// What can be asked for by one name.
struct Target {
  std::string name;
  const char* replyType;  ///< null when it is the name
  Bytes bytes;
};

struct Content {
  std::vector<Target> targets;

  void offer(std::string name, std::string_view bytes, const char* replyType = nullptr) {
    const auto isKnown = [&](const Target& target) { return target.name == name; };
    if (std::ranges::any_of(targets, isKnown)) return;
    targets.push_back({std::move(name), replyType, Bytes(bytes.begin(), bytes.end())});
  }

  void offerText(std::string_view text) {
    offer("UTF8_STRING", text);
    offer("text/plain;charset=utf-8", text);
    // The toolkit's own text/plain is in the charset of the locale, which may garble a password.
    offer("text/plain", text);
    offer("TEXT", text, "UTF8_STRING");
    // STRING is Latin-1 by its definition: no offer is better than a password that is misread.
    const auto isAscii = [](unsigned char byte) { return byte < 0x80; };
    if (std::ranges::all_of(text, isAscii)) offer("STRING", text);
  }
};

GtkClipboard* clipboard() { return gtk_clipboard_get(GDK_SELECTION_CLIPBOARD); }

void giveTarget(GtkClipboard*, GtkSelectionData* request, guint index, gpointer content) {
  const Target& target = static_cast<const Content*>(content)->targets[index];
  const char* type = target.replyType ? target.replyType : target.name.c_str();
  gtk_selection_data_set(request, gdk_atom_intern(type, FALSE), 8, target.bytes.data(),
                         static_cast<gint>(target.bytes.size()));
}

void dropContent(GtkClipboard*, gpointer content) {
  const std::unique_ptr<Content> dropped(static_cast<Content*>(content));
}

}  // namespace

void GtkPasteboard::clearContents() { gtk_clipboard_clear(clipboard()); }

bool GtkPasteboard::writeObjects(std::vector<NSPasteboardItem> items) {
  auto content = std::make_unique<Content>();
  for (const NSPasteboardItem& item : items) {
    for (const auto& [type, text] : item.types()) {
      if (type == NSPasteboardTypeString) {
        content->offerText(text);
        continue;
      }
      content->offer(type, text);
      if (type == kConcealedType) content->offer(kPasswordHint, "secret");
    }
  }
  std::vector<GtkTargetEntry> entries;
  for (Target& target : content->targets) {
    entries.push_back({target.name.data(), 0, static_cast<guint>(entries.size())});
  }
  if (entries.empty() ||
      !gtk_clipboard_set_with_data(clipboard(), entries.data(), static_cast<guint>(entries.size()),
                                   giveTarget, dropContent, content.get())) {
    return false;
  }
  static_cast<void>(content.release());  // dropContent's from here on
  return true;
}

}  // namespace norvane
