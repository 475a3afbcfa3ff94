#include "platform/x11/x11_properties.h"

#include <algorithm>
#include <memory>

#include <X11/Xlib.h>
#include <gdk/gdkx.h>

#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

struct Property {
  std::unique_ptr<unsigned char, Deleter<XFree>> items;
  unsigned long count = 0;
};

/// `most` in units of four bytes.
Property read(XWindow window, const char* name, int format, long most) {
  GdkDisplay* display = gdk_display_get_default();
  Atom type = 0;
  int actualFormat = 0;
  unsigned long count = 0;
  unsigned long left = 0;
  unsigned char* items = nullptr;
  XGetWindowProperty(gdk_x11_display_get_xdisplay(display), window,
                     gdk_x11_get_xatom_by_name_for_display(display, name), 0, most, False,
                     AnyPropertyType, &type, &actualFormat, &count, &left, &items);
  Property property{decltype(Property::items)(items), count};
  if (actualFormat != format) property.count = 0;
  return property;
}

}  // namespace

XErrorsForgiven::XErrorsForgiven() { gdk_x11_display_error_trap_push(gdk_display_get_default()); }

XErrorsForgiven::~XErrorsForgiven() {
  gdk_x11_display_error_trap_pop_ignored(gdk_display_get_default());
}

void hearOfRootProperties() {
  GdkWindow* root = gdk_get_default_root_window();
  gdk_window_set_events(
      root, static_cast<GdkEventMask>(gdk_window_get_events(root) | GDK_PROPERTY_CHANGE_MASK));
}

std::vector<unsigned long> xNumbers(XWindow window, const char* property, long most) {
  const Property numbers = read(window, property, 32, most);
  const auto* first = reinterpret_cast<const unsigned long*>(numbers.items.get());
  std::vector<unsigned long> copies(first, first + numbers.count);
  for (unsigned long& number : copies) number &= 0xFFFFFFFF;  // Xlib extends the sign
  return copies;
}

unsigned long xNumber(XWindow window, const char* property) {
  const auto numbers = xNumbers(window, property, 1);
  return numbers.empty() ? 0 : numbers.front();
}

bool xHasAtom(XWindow window, const char* property, const char* atom) {
  constexpr long kMostAtoms = 64;
  const auto atoms = xNumbers(window, property, kMostAtoms);
  return std::ranges::find(atoms, gdk_x11_get_xatom_by_name_for_display(gdk_display_get_default(),
                                                                        atom)) != atoms.end();
}

std::string xText(XWindow window, const char* property) {
  const Property text = read(window, property, 8, 1024);
  return {reinterpret_cast<const char*>(text.items.get()), text.count};
}

}  // namespace norvane
