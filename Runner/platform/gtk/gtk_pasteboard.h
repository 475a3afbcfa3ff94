#pragma once

#include "platform/ns_pasteboard.h"

namespace norvane {

/// The clipboard of the display. Its content goes when this process ends: none is handed to a
/// clipboard manager. What is kept here is wiped when it is replaced, cleared, or another
/// application copies something.
class GtkPasteboard final : public NSPasteboard {
 public:
  GtkPasteboard() = default;
  GtkPasteboard(const GtkPasteboard&) = delete;
  ~GtkPasteboard() override { clearContents(); }

  /// Gives the clipboard up. What another application put there stays until something is written.
  void clearContents() override;
  /// The clipboard has one content, which this replaces: of a type that several items have, the
  /// first item's. A plain text can be had in every usual text format, in UTF-8.
  bool writeObjects(std::vector<NSPasteboardItem> items) override;
};

}  // namespace norvane
