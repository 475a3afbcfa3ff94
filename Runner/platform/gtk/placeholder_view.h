#pragma once

struct _GtkWidget;

namespace norvane {

/// What a window shows as long as no UI engine draws into it; a panel's is a card of its own, for
/// the panel itself is transparent. Floating, to be put into a window.
_GtkWidget* makePlaceholderView(bool isPanel);

}  // namespace norvane
