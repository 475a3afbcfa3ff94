// The application delegate's item in the status bar: a click toggles Quick Access.

#include <memory>
#include <utility>

#include "app/app_delegate.h"
#include "platform/graphics.h"
#include "platform/ns_process_info.h"
#include "platform/platform.h"
#include "quick_access/qa_panel_controller.h"

namespace norvane {
namespace {

constexpr NSSize kImageSize{18, 18};

/// The application's own image, else the system's key; null when there is neither.
std::shared_ptr<NSImage> statusImage() {
  if (auto image = platform().graphics.imageNamed("MenuBarIcon")) {
    image->setTemplate(true);
    image->setSize(kImageSize);
    return image;
  }
  if (!platform().processInfo.isOperatingSystemAtLeastVersion({11, 0, 0})) return nullptr;
  auto symbol = platform().graphics.imageWithSystemSymbolName("key.fill", "Norvane");
  if (symbol) symbol->setTemplate(true);
  return symbol;
}

}  // namespace

void AppDelegate::installStatusItem() {
  auto item = platform().statusBar.statusItemWithLength(NSSquareStatusItemLength);
  if (NSStatusBarButton* button = item->button()) {
    if (auto image = statusImage()) {
      button->setImage(std::move(image));
    } else {
      button->setTitle("NV");
    }
    button->setToolTip("Norvane — Quick Access");
    button->setAction([weakSelf = weak_from_this()] {
      if (const auto self = weakSelf.lock()) self->statusItemClicked();
    });
  }
  statusItem = std::move(item);
}

void AppDelegate::statusItemClicked() { qaPanel->toggle(); }

}  // namespace norvane
