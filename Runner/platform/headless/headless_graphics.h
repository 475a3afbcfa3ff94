#pragma once

#include <memory>
#include <string>

#include "platform/headless/live_profile.h"
#include "platform/linux/pixbuf_graphics.h"

namespace norvane {

/// Images that exist as the profile says, painted by the desktop itself; the bitmaps are real.
class HeadlessGraphics : public PixbufGraphics {
 public:
  explicit HeadlessGraphics(const LiveProfile& profile) : profile_(profile) {}

  /// The icon of an application: a disc in a colour that follows from its name.
  static std::shared_ptr<NSImage> applicationIcon(const std::string& name);

  std::shared_ptr<NSImage> imageNamed(const std::string& name) override;
  std::shared_ptr<NSImage> imageWithSystemSymbolName(
      const std::string& name, const std::string& accessibilityDescription) override;

 private:
  const LiveProfile& profile_;
};

}  // namespace norvane
