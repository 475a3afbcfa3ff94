#include "platform/x11/x11_event_filter.h"

#include <utility>

#include <gdk/gdkx.h>

namespace norvane {
namespace {

GdkFilterReturn filter(GdkXEvent* event, GdkEvent* /*translated*/, gpointer take) {
  const auto& function = *static_cast<std::function<bool(const XEvent&)>*>(take);
  return function(*static_cast<const XEvent*>(event)) ? GDK_FILTER_REMOVE : GDK_FILTER_CONTINUE;
}

int inputExtension() {
  int opcode = 0;
  int firstEvent = 0;
  int firstError = 0;
  XQueryExtension(gdk_x11_get_default_xdisplay(), "XInputExtension", &opcode, &firstEvent,
                  &firstError);
  return opcode;
}

}  // namespace

X11EventFilter::X11EventFilter(std::function<bool(const XEvent& event)> take)
    : take_(std::move(take)) {
  gdk_window_add_filter(nullptr, filter, &take_);
}

X11EventFilter::~X11EventFilter() { gdk_window_remove_filter(nullptr, filter, &take_); }

int inputEventType(const XEvent& event) {
  static const int extension = inputExtension();
  if (event.type != GenericEvent || event.xcookie.extension != extension) return 0;
  return event.xcookie.data ? event.xcookie.evtype : 0;
}

}  // namespace norvane
