// What the host relies on of windows: frames that hold at once and through hiding, and being told
// of the keyboard's loss, later and once.

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/gtk/gtk_platform.h"
#include "platform/headless/headless_platform.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/stderr_log.h"
#include "platform/ns_panel.h"
#include "real_desktop.h"

namespace norvane {
namespace {

struct World {
  World() { EXPECT_TRUE(::mkdtemp(directory.data())); }
  ~World() { std::filesystem::remove_all(directory); }

  std::string directory = "/tmp/norvane-windows-XXXXXX";
  GlibDispatch dispatch;
  StderrLog log;
};

struct HeadlessWorld : World {
  HeadlessPlatform host{Profile{}, directory, dispatch, log, [] {}};
};

struct RealWorld : World {
  GtkPlatform host{directory, dispatch, log, [] {}};
};

template <class Kind>
class WindowContract : public testing::Test, public Kind {
 protected:
  template <class Window>
  std::shared_ptr<Window> make(NSWindowStyleMask mask) {
    return this->host.application.template makeWindow<Window>(NSRect{{100, 100}, {400, 300}}, mask);
  }
  bool hasKeyboard(const NSWindow& window) { return this->host.desktop.isKey(window); }
  static constexpr NSWindowStyleMask kOrdinary =
      NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskResizable;
};
using Worlds = testing::Types<HeadlessWorld, RealWorld>;
TYPED_TEST_SUITE(WindowContract, Worlds);

struct Resignations : NSWindowDelegate {
  void windowDidResignKey(NSWindow&) override { ++count; }
  int count = 0;
};

TYPED_TEST(WindowContract, AFrameHoldsAtOnceAndThroughHiding) {
  const auto window = this->template make<NSWindow>(this->kOrdinary);
  const NSRect wanted{{30.5, 40}, {640, 480}};
  window->setMinSize({600, 400});
  window->setFrame(wanted, true, true);
  EXPECT_EQ(window->frame(), wanted);
  for (int showing = 0; showing < 2; ++showing) {
    EXPECT_FALSE(window->isVisible());
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(window->isVisible());
    ASSERT_TRUE(await([&] { return this->hasKeyboard(*window) && this->dispatch.isQuiet(); }));
    EXPECT_EQ(window->frame(), wanted);
    window->orderOut();
  }
}

TYPED_TEST(WindowContract, ThePanelTakesTheKeyboardAndHearsOfItsLossLaterAndOnce) {
  const auto window = this->template make<NSWindow>(this->kOrdinary);
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
