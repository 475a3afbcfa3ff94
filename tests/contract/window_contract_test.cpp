// What the host relies on of windows: frames that hold at once, on the screen and through hiding,
// and being told of the keyboard's loss, later and once.

#include <cmath>
#include <memory>

#include "contract.h"
#include "platform/ns_panel.h"
#include "worlds.h"

namespace norvane {
namespace {

bool isAbout(const NSRect& a, const NSRect& b) {
  return std::abs(a.origin.x - b.origin.x) <= 0.5 && a.origin.y == b.origin.y && a.size == b.size;
}

template <class Kind>
class WindowContract : public testing::Test, public Kind {
 public:
  template <class Window>
  std::shared_ptr<Window> make(NSWindowStyleMask mask) {
    return this->host.application.template makeWindow<Window>(NSRect{{100, 100}, {400, 300}}, mask);
  }
  bool hasKeyboard(const NSWindow& window) { return this->host.application.isKey(window); }
};
TYPED_TEST_SUITE(WindowContract, WindowWorlds);

TYPED_TEST(WindowContract, AFrameHoldsAtOnceOnTheScreenAndThroughHidingWhateverTheLimits) {
  const auto window = this->template make<NSWindow>(kOrdinary);
  window->setMinSize({940, 600});
  NSRect wanted{{40.5, 50}, {820, 600}};
  const auto expectOnScreen = [&](const char* when) {
    EXPECT_EQ(window->frame(), wanted) << when;
    EXPECT_TRUE(await([&] { return isAbout(this->onScreen(*window), wanted); })) << when;
    EXPECT_TRUE(await([&] { return this->dispatch.isQuiet(); }));
    EXPECT_TRUE(isAbout(this->onScreen(*window), wanted) && window->frame() == wanted) << when;
  };
  for (const double x : {40.5, 300.0}) {
    wanted.origin.x = x;
    window->setFrame(wanted, true, true);
    EXPECT_FALSE(window->isVisible());
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    ASSERT_TRUE(await([&] { return this->hasKeyboard(*window); }));
    expectOnScreen("shown");
    this->maximise();
    wanted.size.width += 100;
    window->setFrame(wanted, true, true);
    expectOnScreen("no longer maximised");
    window->orderOut();
  }
}

TYPED_TEST(WindowContract, ThePanelTakesTheKeyboardAndHearsOfItsLossLaterAndOnce) {
  const auto window = this->template make<NSWindow>(kOrdinary);
  const auto panel = this->template make<NSPanel>(NSWindowStyleMaskNonactivatingPanel);
  const auto heard = std::make_shared<Resignations>();
  panel->setDelegate(heard);
  window->makeKeyAndOrderFront();
  this->host.application.activateIgnoringOtherApps();
  ASSERT_TRUE(await([&] { return this->hasKeyboard(*window); }));
  for (int time = 1; time <= 2; ++time) {
    panel->makeKeyAndOrderFront();
    ASSERT_TRUE(await([&] { return this->hasKeyboard(*panel) && this->dispatch.isQuiet(); }));
    EXPECT_EQ(heard->count, time - 1);
    if (time == 1) window->makeKeyAndOrderFront();
    if (time == 2) panel->orderOut();
    EXPECT_EQ(heard->count, time - 1) << "inside the call";
    ASSERT_TRUE(await([&] { return heard->count == time && this->hasKeyboard(*window); }));
  }
}

}  // namespace
}  // namespace norvane
