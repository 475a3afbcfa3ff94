#include "platform/gtk/desktop_window.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include "platform/gtk/primary_screen.h"
#include "platform/ns_window.h"
#include "platform/ui/window_ui.h"
#include "platform/x11/x11_properties.h"

namespace norvane {
namespace {

// A window manager answers within a few milliseconds; while the person drags, frames follow one
// another. Seconds.
constexpr double kSettled = 0.2;

// What the window manager has put around the window: left, right, top, bottom.
constexpr const char* kFrameExtents = "_NET_FRAME_EXTENTS";

bool isAbout(const NSRect& a, const NSRect& b) {
  const auto near = [](double x, double y) { return std::abs(x - y) <= 1; };
  return near(a.origin.x, b.origin.x) && near(a.origin.y, b.origin.y) &&
         near(a.size.width, b.size.width) && near(a.size.height, b.size.height);
}

/// `frame`, moved into `area`, and cut where it is larger.
NSRect inside(const NSRect& area, NSRect frame) {
  const auto fit = [](double& origin, double& size, double start, double room) {
    size = std::min(size, room);
    origin = std::clamp(origin, start, start + room - size);
  };
  fit(frame.origin.x, frame.size.width, area.origin.x, area.size.width);
  fit(frame.origin.y, frame.size.height, area.origin.y, area.size.height);
  return frame;
}

int pixels(double points) {
  return static_cast<int>(std::lround(std::clamp(points, 1.0, double{G_MAXSHORT})));
}

}  // namespace

/// What the toolkit tells the window.
struct DesktopWindow::Signals {
  static gboolean deleteEvent(GtkWidget*, GdkEvent*, DesktopWindow* self) {
    self->desktop_.personCloses(self->owner_.weak_from_this());
    return TRUE;  // the toolkit would destroy it
  }
  static gboolean mapEvent(GtkWidget*, GdkEvent*, DesktopWindow* self) {
    self->mapped();
    return FALSE;
  }
  static gboolean configureEvent(GtkWidget*, GdkEvent*, DesktopWindow* self) {
    self->frameMayHaveChanged();
    return FALSE;
  }
  static gboolean propertyEvent(GtkWidget*, GdkEventProperty* event, DesktopWindow* self) {
    static const GdkAtom extents = gdk_atom_intern_static_string(kFrameExtents);
    if (event->atom == extents) self->frameMayHaveChanged();
    return FALSE;
  }
  static gboolean focusEvent(GtkWidget*, GdkEventFocus* event, DesktopWindow* self) {
    // Whoever is given the keyboard has it, even if another has taken it by now. Before the window
    // is mapped the event is about an earlier showing.
    if (event->in && self->visible_ && self->desktop_.wantsKeyboard_ != self) {
      self->desktop_.application_.setKeyWindow(&self->owner_);
    }
    self->desktop_.updateKeyWindow();
    return FALSE;
  }
  static gboolean stateEvent(GtkWidget*, GdkEventWindowState* event, DesktopWindow* self) {
    self->state_ = event->new_window_state;
    if (!self->isZoomed() && self->leavesZoom_) self->applyFrame();
    return FALSE;
  }
  static gboolean buttonPress(GtkWidget* widget, GdkEventButton* event, DesktopWindow* self) {
    if (!self->appearance_.movableByWindowBackground) return FALSE;
    gtk_window_begin_move_drag(GTK_WINDOW(widget), static_cast<int>(event->button),
                               static_cast<int>(event->x_root), static_cast<int>(event->y_root),
                               event->time);
    return TRUE;
  }
  static gboolean draw(GtkWidget* widget, cairo_t* context, DesktopWindow* self) {
    if (!self->appearance_.clearBackground) return FALSE;
    // Without a compositor nothing would be seen through it, but black.
    if (!gdk_screen_is_composited(gtk_widget_get_screen(widget))) {
      gtk_render_background(gtk_widget_get_style_context(widget), context, 0, 0,
                            gtk_widget_get_allocated_width(widget),
                            gtk_widget_get_allocated_height(widget));
      return FALSE;
    }
    cairo_save(context);
    cairo_set_operator(context, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(context, 0, 0, 0, 0);
    cairo_paint(context);
    cairo_restore(context);
    return FALSE;
  }
};

DesktopWindow::DesktopWindow(GtkDesktop& desktop, NSWindow& owner, const NSRect& frame,
                             NSWindowStyleMask styleMask)
    : desktop_(desktop),
      owner_(owner),
      window_(gtk_window_new(GTK_WINDOW_TOPLEVEL)),
      frame_(frame),
      styleMask_(styleMask) {
  desktop_.windows_.push_back(this);
  GtkWindow* window = GTK_WINDOW(window_);
  gtk_window_set_title(window, isPanel() ? "Norvane — Quick Access" : "Norvane");
  if (GdkVisual* visual = gdk_screen_get_rgba_visual(gtk_widget_get_screen(window_))) {
    if (isPanel()) gtk_widget_set_visual(window_, visual);  // only before it is realized
  }
  if (isPanel()) {
    gtk_window_set_type_hint(window, GDK_WINDOW_TYPE_HINT_UTILITY);
    gtk_window_set_skip_taskbar_hint(window, TRUE);
    gtk_window_set_skip_pager_hint(window, TRUE);
  }
  gtk_widget_add_events(window_, GDK_BUTTON_PRESS_MASK | GDK_PROPERTY_CHANGE_MASK);
  const auto connect = [&](const char* signal, auto* handler) {
    g_signal_connect(window_, signal, G_CALLBACK(handler), this);
  };
  connect("delete-event", &Signals::deleteEvent);
  connect("map-event", &Signals::mapEvent);
  connect("configure-event", &Signals::configureEvent);
  connect("property-notify-event", &Signals::propertyEvent);
  connect("focus-in-event", &Signals::focusEvent);
  connect("focus-out-event", &Signals::focusEvent);
  connect("window-state-event", &Signals::stateEvent);
  connect("button-press-event", &Signals::buttonPress);
  connect("draw", &Signals::draw);
  setStyleMask(styleMask);
}

DesktopWindow::~DesktopWindow() {
  if (desktop_.wantsKeyboard_ == this) desktop_.wantsKeyboard_ = nullptr;
  std::erase(desktop_.windows_, this);
  g_signal_handlers_disconnect_by_data(window_, this);
  gtk_widget_destroy(window_);
}

bool DesktopWindow::isPanel() const { return styleMask_ & NSWindowStyleMaskNonactivatingPanel; }

bool DesktopWindow::isMapped() const { return gtk_widget_get_mapped(window_); }

bool DesktopWindow::isZoomed() const {
  return state_ & (GDK_WINDOW_STATE_MAXIMIZED | GDK_WINDOW_STATE_FULLSCREEN);
}

bool DesktopWindow::isVisible() const { return visible_ && !(state_ & GDK_WINDOW_STATE_ICONIFIED); }

bool DesktopWindow::contains(_GdkWindow* window) const {
  return visible_ && window && gdk_window_get_toplevel(window) == gtk_widget_get_window(window_);
}

void DesktopWindow::showView(FlutterViewController& controller) {
  GtkContainer* const window = GTK_CONTAINER(window_);
  gtk_container_foreach(
      window, [](GtkWidget* child, gpointer) { gtk_widget_destroy(child); }, nullptr);
  gtk_container_add(window, desktop_.ui_.makeView(controller));
}

void DesktopWindow::orderFront() {
  gtk_window_set_focus_on_map(GTK_WINDOW(window_), FALSE);
  comeIntoSight();
  visible_ = true;
  applyFrame();
  gtk_widget_show(window_);
  applyFrame();
}

void DesktopWindow::makeKeyAndOrderFront() {
  GtkWindow* window = GTK_WINDOW(window_);
  const bool wasVisible = std::exchange(visible_, true);
  gtk_window_set_focus_on_map(window, TRUE);
  if (!wasVisible) {
    // A hidden window loses all three.
    if (appearance_.collectionBehavior & NSWindowCollectionBehaviorCanJoinAllSpaces) {
      gtk_window_stick(window);
    }
    gtk_window_set_keep_above(window, appearance_.level > NSNormalWindowLevel);
    comeIntoSight();
    applyFrame();
  } else if (GdkWindow* mappedWindow = gtk_widget_get_window(window_)) {
    // A window on another desktop is not brought by asking for the keyboard.
    gdk_x11_window_move_to_current_desktop(mappedWindow);
  }
  if (!isMapped()) {
    desktop_.wantsKeyboard_ = this;
  } else if (desktop_.wantsKeyboard_ != this) {
    desktop_.wantsKeyboard_ = nullptr;
  }
  gtk_window_present_with_time(window, desktop_.eventTime_.last());
  // A place given before the window is shown again is lost.
  if (!wasVisible) applyFrame();
}

void DesktopWindow::orderOut() {
  visible_ = false;
  leavesZoom_ = false;
  if (desktop_.wantsKeyboard_ == this) desktop_.wantsKeyboard_ = nullptr;
  gtk_widget_hide(window_);
  desktop_.updateKeyWindow();
}

// Some window managers do not give a new window the keyboard that is kept off their taskbar.
void DesktopWindow::mapped() {
  if (desktop_.wantsKeyboard_ != this) return;
  desktop_.wantsKeyboard_ = nullptr;
  gdk_window_focus(gtk_widget_get_window(window_), desktop_.eventTime_.last());
}

void DesktopWindow::setFrame(const NSRect& frame, bool /*animate*/) {
  frame_ = frame;
  const auto screen = primaryScreen();
  if (screen) {
    const NSRect visible = screen->visibleAreaNear(frame);
    const double top = visible.origin.y + visible.size.height;
    if (isPanel()) {
      frame_ = inside(visible, frame);
    } else if (styleMask_ & NSWindowStyleMaskTitled) {
      frame_.origin.y = std::min(frame.origin.y, top - frame.size.height);
    }
  }
  leavesZoom_ = isZoomed() && isMapped();
  if (leavesZoom_) {
    settles_ = true;
    applyLimits();
    gtk_container_check_resize(GTK_CONTAINER(window_));
  }
  if (state_ & GDK_WINDOW_STATE_FULLSCREEN) gtk_window_unfullscreen(GTK_WINDOW(window_));
  // Also where the toolkit knows of no such state: it counts only both directions together, and
  // KWin maximises a window in one that is as large as the screen in it.
  if (isMapped()) gtk_window_unmaximize(GTK_WINDOW(window_));
  if (!leavesZoom_) applyFrame();
}

void DesktopWindow::restoreFrame(const NSRect& frame) {
  const auto screen = primaryScreen();
  setFrame(screen ? inside(screen->visibleAreaNear(frame), frame) : frame, /*animate=*/false);
}

void DesktopWindow::screensChanged() {
  screensChanged_ = true;
  takeFrameLater();  // when the window manager has done what it does with windows then
}

void DesktopWindow::comeIntoSight() {
  const auto screen = primaryScreen();
  if (screen && !screen->isInSight(frame_)) restoreFrame(frame_);
}

void DesktopWindow::setMinSize(const NSSize& size) {
  minSize_ = size;
  applyLimits();
}

void DesktopWindow::setMaxSize(const NSSize& size) {
  maxSize_ = size;
  applyLimits();
}

void DesktopWindow::setStyleMask(NSWindowStyleMask styleMask) {
  styleMask_ = styleMask;
  gtk_window_set_decorated(GTK_WINDOW(window_), (styleMask & NSWindowStyleMaskTitled) != 0);
  applyLimits();
}

void DesktopWindow::setAppearance(const WindowAppearance& appearance) {
  appearance_ = appearance;
  gtk_widget_set_app_paintable(window_, appearance.clearBackground);
  gtk_window_set_keep_above(GTK_WINDOW(window_), appearance.level > NSNormalWindowLevel);
  gtk_widget_queue_draw(window_);
}

void DesktopWindow::applyFrame() {
  const auto screen = primaryScreen();
  if (!screen) return;
  settles_ = isMapped();
  applyLimits();
  const GdkRectangle frame = screen->fromPoints(frame_);
  const int width = pixels(frame.width - decoration_.width);
  const int height = pixels(frame.height - decoration_.height);
  gtk_window_resize(GTK_WINDOW(window_), width, height);
  gtk_window_move(GTK_WINDOW(window_), frame.x, frame.y);
  if (!isMapped()) return;
  takeFrameLater();  // what is there now is not what the window manager will make of this
  // The toolkit does not ask again for what it asked for before, though the window manager may have
  // made another of it since. The limits must be there first.
  gtk_container_check_resize(GTK_CONTAINER(window_));
  gdk_window_move_resize(gtk_widget_get_window(window_), frame.x, frame.y, width, height);
}

// The window manager's limits are those of the client, without the decoration, and bind the host as
// well, which they must not. While a frame is on its way there are none: a window manager that
// first brings the old frame within the new limits has the toolkit take that for the answer and ask
// for it again, and Xfwm4 keeps a window maximised that is no larger than the least.
void DesktopWindow::applyLimits() {
  const bool isResizable = styleMask_ & NSWindowStyleMaskResizable;
  NSSize least = frame_.size;
  NSSize most = frame_.size;
  if (isResizable ? settles_ : leavesZoom_) {
    least = {};
    most = kUnboundedSize;
  } else if (isResizable) {
    least = {std::min(minSize_.width, least.width), std::min(minSize_.height, least.height)};
    most = {std::max(maxSize_.width, most.width), std::max(maxSize_.height, most.height)};
  }
  GdkGeometry limits{};
  limits.min_width = pixels(least.width - decoration_.width);
  limits.min_height = pixels(least.height - decoration_.height);
  limits.max_width = pixels(most.width - decoration_.width);
  limits.max_height = pixels(most.height - decoration_.height);
  gtk_window_set_geometry_hints(
      GTK_WINDOW(window_), nullptr, &limits,
      static_cast<GdkWindowHints>(GDK_HINT_MIN_SIZE |
                                  (most == kUnboundedSize ? 0 : GDK_HINT_MAX_SIZE)));
}

// Known once the window manager has put the window into its frame; without one there is none. What
// was asked for before was meant for another decoration.
void DesktopWindow::learnDecoration() {
  std::vector<unsigned long> extents;
  {
    const XErrorsForgiven forgiven;
    extents = xNumbers(gdk_x11_window_get_xid(gtk_widget_get_window(window_)), kFrameExtents, 4);
  }
  if (extents.size() != 4 || isZoomed()) return;
  if (std::ranges::any_of(extents, [](unsigned long extent) { return extent > G_MAXSHORT; }))
    return;
  const int scale = gtk_widget_get_scale_factor(window_);
  const Decoration decoration{static_cast<int>(extents[0] + extents[1]) / scale,
                              static_cast<int>(extents[2] + extents[3]) / scale};
  if (decoration == decoration_) return;
  decoration_ = decoration;
  applyFrame();
}

void DesktopWindow::frameMayHaveChanged() {
  if (!isVisible() || !isMapped()) return;
  learnDecoration();
  takeFrameLater();
}

void DesktopWindow::takeFrameLater() {
  desktop_.dispatch_.mainAfter(kSettled,
                               [this, change = ++changes_, weakOwner = owner_.weak_from_this()] {
                                 if (!weakOwner.expired() && change == changes_) takeSettledFrame();
                               });
}

// Only of a window that is on screen: hidden and iconified ones report frames that are none.
void DesktopWindow::takeSettledFrame() {
  const auto screen = primaryScreen();
  if (!isVisible() || !isMapped() || !screen) return;
  if (leavesZoom_) {
    if (isZoomed()) return;
    leavesZoom_ = false;
    applyFrame();  // once more: the first came while the window manager had not finished
    return;
  }
  if (std::exchange(settles_, false)) applyLimits();
  GdkRectangle extents;
  gdk_window_get_frame_extents(gtk_widget_get_window(window_), &extents);
  const NSRect settled = screen->toPoints(extents);
  const bool isElsewhere = std::exchange(screensChanged_, false) && !screen->isInSight(settled);
  if (isAbout(settled, frame_) && !isElsewhere) return;
  frame_ = settled;
  if (isElsewhere && !isZoomed()) comeIntoSight();
  owner_.frameDidChange();
}

}  // namespace norvane
