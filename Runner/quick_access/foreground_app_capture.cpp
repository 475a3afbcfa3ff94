#include <string>

#include "platform/ns_bundle.h"
#include "platform/ns_workspace.h"
#include "platform/platform.h"
#include "quick_access/qa_panel_controller.h"

namespace norvane {
namespace {

constexpr int kIconSide = 64;  // pixels

}  // namespace

FlutterMap QAPanelController::captureForegroundApp() {
  const auto front = platform().workspace.frontmostApplication();
  if (!front) return {};
  const auto own = platform().mainBundle.bundleIdentifier();
  if (own && own == front->bundleIdentifier) return {};

  const std::string name = front->localizedName.value_or("");
  FlutterMap capture{
      {"identity", front->bundleIdentifier.value_or(name)}, {"name", name}, {"frontmostApp", name}};
  if (auto png = pngData(front->icon, kIconSide)) {
    capture.emplace_back("iconPng", *std::move(png));
  }
  return capture;
}

std::optional<std::vector<std::uint8_t>> QAPanelController::pngData(
    const std::shared_ptr<NSImage>& image, int side) {
  if (!image) return std::nullopt;
  const auto bitmap = platform().graphics.makeBitmapImageRep(side);
  if (!bitmap || !bitmap->draw(*image)) return std::nullopt;
  return bitmap->pngRepresentation();
}

}  // namespace norvane
