#include "platform/headless/headless_graphics.h"

#include <cmath>
#include <functional>

namespace norvane {
namespace {

constexpr std::uint32_t kBlack = 0x000000FF;

Pixbuf disc(int side, std::uint32_t rgba) {
  Pixbuf pixels = Pixbuf::make(side, side);
  const double radius = side / 2.0;
  for (int y = 0; pixels && y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      if (std::hypot(x + 0.5 - radius, y + 0.5 - radius) <= radius) pixels.set(x, y, rgba);
    }
  }
  return pixels;
}

std::shared_ptr<NSImage> blackDisc(const std::string& name, NSSize size) {
  return std::make_shared<PixbufImage>(name, size, [] { return disc(64, kBlack); });
}

}  // namespace

std::shared_ptr<NSImage> HeadlessGraphics::applicationIcon(const std::string& name) {
  constexpr int kSide = 128;
  const auto colour = static_cast<std::uint32_t>(std::hash<std::string>()(name)) << 8 | 0xFF;
  return std::make_shared<PixbufImage>(name, NSSize{kSide, kSide},
                                       [=] { return disc(kSide, colour); });
}

std::shared_ptr<NSImage> HeadlessGraphics::imageNamed(const std::string& name) {
  if (name != "MenuBarIcon" || !profile_.get(&Profile::menuBarIcon)) return nullptr;
  return blackDisc(name, {36, 36});
}

std::shared_ptr<NSImage> HeadlessGraphics::imageWithSystemSymbolName(
    const std::string& name, const std::string& /*accessibilityDescription*/) {
  if (name != "key.fill" || !profile_.get(&Profile::symbols)) return nullptr;
  return blackDisc(name, {15, 17});
}

}  // namespace norvane
