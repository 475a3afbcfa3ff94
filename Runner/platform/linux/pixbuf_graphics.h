#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/graphics.h"

struct _GdkPixbuf;

namespace norvane {

/// Pixels in the format of gdk-pixbuf: rows of red, green, blue and alpha, 8 bits each, alpha not
/// multiplied in. Empty when the library cannot be had.
class Pixbuf {
 public:
  Pixbuf() = default;
  /// Transparent.
  static Pixbuf make(int width, int height);
  /// Takes over the caller's reference; null makes an empty one.
  static Pixbuf adopt(_GdkPixbuf* pixbuf);
  Pixbuf(Pixbuf&& other) noexcept;
  Pixbuf& operator=(Pixbuf&& other) noexcept;
  ~Pixbuf();

  explicit operator bool() const { return pixbuf_ != nullptr; }
  /// Still this one's; null when empty.
  _GdkPixbuf* get() const { return pixbuf_; }
  /// Sets one pixel to 0xRRGGBBAA.
  void set(int x, int y, std::uint32_t rgba);
  /// Draws the whole of `other`, scaled, over the whole of this one.
  void draw(const Pixbuf& other);
  std::optional<std::vector<std::uint8_t>> png() const;

 private:
  _GdkPixbuf* pixbuf_ = nullptr;
};

/// An image that is painted when it is first drawn.
class PixbufImage : public NSImage {
 public:
  PixbufImage(std::string name, NSSize size, std::function<Pixbuf()> paint);

  const std::string& name() const { return name_; }
  NSSize size() const { return size_; }
  bool isTemplate() const { return isTemplate_; }
  const Pixbuf& pixels() const;

  void setTemplate(bool isTemplate) override { isTemplate_ = isTemplate; }
  void setSize(const NSSize& size) override { size_ = size; }

 private:
  std::string name_;
  NSSize size_;
  bool isTemplate_ = false;
  std::function<Pixbuf()> paint_;
  mutable Pixbuf pixels_;
};

/// Bitmaps by gdk-pixbuf; draws images that are PixbufImages.
class PixbufGraphics : public Graphics {
 public:
  std::unique_ptr<NSBitmapImageRep> makeBitmapImageRep(int side) override;
};

}  // namespace norvane
