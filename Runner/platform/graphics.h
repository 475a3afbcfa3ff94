#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace norvane {

/// A picture of the platform's; of what was set, the last counts. Main thread.
class NSImage {
 public:
  virtual ~NSImage() = default;

  /// A template is drawn in the colour of its surroundings.
  virtual void setTemplate(bool isTemplate) = 0;
  /// In points, for those who leave it the choice; a bitmap takes the picture whole.
  virtual void setSize(const NSSize& size) = 0;
};

/// A square bitmap, 8 bits for each of red, green, blue and alpha. Main thread.
class NSBitmapImageRep {
 public:
  virtual ~NSBitmapImageRep() = default;

  /// Draws the whole of `image`, of the same Graphics, over what is there, into the whole bitmap.
  /// False when that fails or the image cannot be had; the bitmap is then as it was.
  virtual bool draw(const NSImage& image) = 0;
  /// The bitmap as it is now, as a PNG file; nothing when that fails.
  virtual std::optional<std::vector<std::uint8_t>> pngRepresentation() = 0;
};

/// Where images come from, a new one at each call. Main thread.
class Graphics {
 public:
  virtual ~Graphics() = default;

  /// The application's image resource; null when there is none of that name.
  virtual std::shared_ptr<NSImage> imageNamed(const std::string& name) = 0;
  /// A symbol of the system's, in its own size; null when the system does not know it. Needs 11.0.
  virtual std::shared_ptr<NSImage> imageWithSystemSymbolName(
      const std::string& name, const std::string& accessibilityDescription) = 0;
  /// A transparent bitmap of `side` × `side` pixels, one to a point; null when it cannot be made.
  virtual std::unique_ptr<NSBitmapImageRep> makeBitmapImageRep(int side) = 0;
};

}  // namespace norvane
