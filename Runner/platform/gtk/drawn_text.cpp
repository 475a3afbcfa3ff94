#include "platform/gtk/drawn_text.h"

#include <algorithm>

#include <gdk/gdk.h>
#include <pango/pangocairo.h>

#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

using CairoSurfacePtr = std::unique_ptr<cairo_surface_t, Deleter<cairo_surface_destroy>>;
using CairoPtr = std::unique_ptr<cairo_t, Deleter<cairo_destroy>>;
using FontPtr = std::unique_ptr<PangoFontDescription, Deleter<pango_font_description_free>>;

}  // namespace

// White with a dark rim: nobody says which colour the status bar has.
Pixbuf drawnText(const std::string& text, int side) {
  const CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side));
  const CairoPtr cairo(cairo_create(surface.get()));
  const GObjectPtr<PangoLayout> layout(pango_cairo_create_layout(cairo.get()));
  const FontPtr font(pango_font_description_from_string("Sans Bold"));
  pango_font_description_set_absolute_size(font.get(), side * 0.6 * PANGO_SCALE);
  pango_layout_set_font_description(layout.get(), font.get());
  pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout.get(), &width, &height);
  const double scale = std::min(1.0, static_cast<double>(side) / std::max(width, 1));
  cairo_translate(cairo.get(), (side - width * scale) / 2, (side - height * scale) / 2);
  cairo_scale(cairo.get(), scale, scale);
  pango_cairo_layout_path(cairo.get(), layout.get());
  cairo_set_source_rgba(cairo.get(), 0, 0, 0, 0.6);
  cairo_set_line_width(cairo.get(), side / 12.0);
  cairo_stroke_preserve(cairo.get());
  cairo_set_source_rgb(cairo.get(), 1, 1, 1);
  cairo_fill(cairo.get());
  return Pixbuf::adopt(gdk_pixbuf_get_from_surface(surface.get(), 0, 0, side, side));
}

}  // namespace norvane
