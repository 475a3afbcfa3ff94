#include "platform/linux/pixbuf_graphics.h"

#include <optional>
#include <utility>

#include <gdk-pixbuf/gdk-pixbuf.h>

#include "platform/linux/glib_handles.h"
#include "platform/linux/lazy_library.h"

namespace norvane {
namespace {

/// The functions of gdk-pixbuf, GObject and GLib that are used.
struct LibPixbuf {
  decltype(::gdk_pixbuf_new)* make = nullptr;
  decltype(::gdk_pixbuf_fill)* fill = nullptr;
  decltype(::gdk_pixbuf_get_width)* width = nullptr;
  decltype(::gdk_pixbuf_get_height)* height = nullptr;
  decltype(::gdk_pixbuf_get_rowstride)* rowStride = nullptr;
  decltype(::gdk_pixbuf_get_pixels)* pixels = nullptr;
  decltype(::gdk_pixbuf_composite)* composite = nullptr;
  decltype(::gdk_pixbuf_save_to_bufferv)* save = nullptr;
  decltype(::g_object_unref)* unref = nullptr;
  bool loaded = false;

  static const LibPixbuf& instance() {
    static const LibPixbuf library;
    return library;
  }

 private:
  LibPixbuf() {
    const LazyLibrary pixbuf("libgdk_pixbuf-2.0.so.0");
    const LazyLibrary object("libgobject-2.0.so.0");
    loaded = pixbuf.find(make, "gdk_pixbuf_new") && pixbuf.find(fill, "gdk_pixbuf_fill") &&
             pixbuf.find(width, "gdk_pixbuf_get_width") &&
             pixbuf.find(height, "gdk_pixbuf_get_height") &&
             pixbuf.find(rowStride, "gdk_pixbuf_get_rowstride") &&
             pixbuf.find(pixels, "gdk_pixbuf_get_pixels") &&
             pixbuf.find(composite, "gdk_pixbuf_composite") &&
             pixbuf.find(save, "gdk_pixbuf_save_to_bufferv") &&
             object.find(unref, "g_object_unref");
  }
};

class PixbufBitmap : public NSBitmapImageRep {
 public:
  explicit PixbufBitmap(Pixbuf pixels) : pixels_(std::move(pixels)) {}

  bool draw(const NSImage& image) override {
    const auto* source = dynamic_cast<const PixbufImage*>(&image);
    if (!source || !source->pixels()) return false;
    pixels_.draw(source->pixels());
    return true;
  }
  std::optional<std::vector<std::uint8_t>> pngRepresentation() override { return pixels_.png(); }

 private:
  Pixbuf pixels_;
};

}  // namespace

Pixbuf Pixbuf::make(int width, int height) {
  const LibPixbuf& library = LibPixbuf::instance();
  Pixbuf made;
  if (!library.loaded) return made;
  made.pixbuf_ = library.make(GDK_COLORSPACE_RGB, TRUE, 8, width, height);
  if (made.pixbuf_) library.fill(made.pixbuf_, 0);
  return made;
}

Pixbuf Pixbuf::adopt(_GdkPixbuf* pixbuf) {
  Pixbuf adopted;
  adopted.pixbuf_ = pixbuf;
  return adopted;
}

Pixbuf::Pixbuf(Pixbuf&& other) noexcept : pixbuf_(std::exchange(other.pixbuf_, nullptr)) {}

Pixbuf& Pixbuf::operator=(Pixbuf&& other) noexcept {
  std::swap(pixbuf_, other.pixbuf_);
  return *this;
}

Pixbuf::~Pixbuf() {
  if (pixbuf_) LibPixbuf::instance().unref(pixbuf_);
}

void Pixbuf::set(int x, int y, std::uint32_t rgba) {
  const LibPixbuf& library = LibPixbuf::instance();
  guchar* pixel = library.pixels(pixbuf_) + y * library.rowStride(pixbuf_) + x * 4;
  for (int channel = 0; channel < 4; ++channel) {
    pixel[channel] = static_cast<guchar>(rgba >> (24 - 8 * channel));
  }
}

void Pixbuf::draw(const Pixbuf& other) {
  const LibPixbuf& library = LibPixbuf::instance();
  const int width = library.width(pixbuf_);
  const int height = library.height(pixbuf_);
  const double scaleX = static_cast<double>(width) / library.width(other.pixbuf_);
  const double scaleY = static_cast<double>(height) / library.height(other.pixbuf_);
  library.composite(other.pixbuf_, pixbuf_, 0, 0, width, height, 0, 0, scaleX, scaleY,
                    GDK_INTERP_BILINEAR, 255);
}

std::optional<std::vector<std::uint8_t>> Pixbuf::png() const {
  gchar* data = nullptr;
  gsize size = 0;
  if (!LibPixbuf::instance().save(pixbuf_, &data, &size, "png", nullptr, nullptr, nullptr)) {
    return std::nullopt;
  }
  const GTextPtr owned(data);
  return std::vector<std::uint8_t>(data, data + size);
}

PixbufImage::PixbufImage(std::string name, NSSize size, std::function<Pixbuf()> paint)
    : name_(std::move(name)), size_(size), paint_(std::move(paint)) {}

const Pixbuf& PixbufImage::pixels() const {
  if (!pixels_) pixels_ = paint_();
  return pixels_;
}

std::unique_ptr<NSBitmapImageRep> PixbufGraphics::makeBitmapImageRep(int side) {
  auto pixels = Pixbuf::make(side, side);
  return pixels ? std::make_unique<PixbufBitmap>(std::move(pixels)) : nullptr;
}

}  // namespace norvane
