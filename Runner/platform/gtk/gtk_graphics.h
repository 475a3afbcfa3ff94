#pragma once

#include <memory>
#include <string>

#include "platform/linux/pixbuf_graphics.h"

namespace norvane {

/// Images of the bundle, by the path of their file, and of the icon theme, by their name there:
/// that is the name of the PixbufImage, so that who can draw icons in another colour may do so.
class GtkGraphics : public PixbufGraphics {
 public:
  explicit GtkGraphics(const std::string& bundlePath);

  /// NAME-symbolic.svg among the bundle's resources.
  std::shared_ptr<NSImage> imageNamed(const std::string& name) override;
  std::shared_ptr<NSImage> imageWithSystemSymbolName(
      const std::string& name, const std::string& accessibilityDescription) override;

 private:
  std::string resources_;
};

}  // namespace norvane
