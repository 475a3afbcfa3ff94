#include "app/main_interface.h"

#include <memory>

#include "app/app_delegate.h"
#include "platform/platform.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

// Where the window stands before its code has laid it out.
constexpr NSRect kInitialContentRect{{250, 150}, {940, 600}};
constexpr NSWindowStyleMask kStyleMask = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                         NSWindowStyleMaskMiniaturizable |
                                         NSWindowStyleMaskResizable;

}  // namespace

MainInterface mainInterface() {
  return {
      .makeDelegate = [] { return std::make_shared<AppDelegate>(); },
      .makeMainWindow =
          [] {
            return platform().application.makeWindow<MainFlutterWindow>(kInitialContentRect,
                                                                        kStyleMask);
          },
  };
}

}  // namespace norvane
