#pragma once

#include <string>

struct _GtkWidget;

namespace norvane {

/// What a window shows where no UI draws into it: a headline and `message` below it. A panel's is a
/// card of its own, for the panel itself is transparent. Floating, to be put into a window.
_GtkWidget* makeMessageView(bool isPanel, const std::string& message);

}  // namespace norvane
