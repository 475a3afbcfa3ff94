// The time since the person's last input: simulated, the X server's, and the desktop's.

#include <gtest/gtest.h>

#include "platform/gtk/idle_time.h"
#include "platform/headless/headless_services.h"
#include "platform/linux/glib_dispatch.h"
#include "real_desktop.h"

namespace norvane {
namespace {

class Simulated {
 public:
  const CGEventSource& source() { return source_; }
  void input() { source_.input(kCGEventKeyDown); }

 private:
  HeadlessEventSource source_;
};

class Real {
 public:
  const CGEventSource& source() { return source_; }
  void input() { person_.press(38); }

 private:
  OtherClient person_;
  IdleTime source_;
};

void pass(double seconds) {
  GlibDispatch dispatch;
  bool passed = false;
  dispatch.mainAfter(seconds, [&] { passed = true; });
  ASSERT_TRUE(await([&] { return passed; }));
}

template <class World>
class IdleContract : public testing::Test {
 protected:
  double idle() { return world_.source().secondsSinceLastEventType(kCGEventKeyDown); }
  World world_;
};

using Worlds = testing::Types<Simulated, Real>;
TYPED_TEST_SUITE(IdleContract, Worlds);

TYPED_TEST(IdleContract, TimePassesUntilThereIsInput) {
  this->world_.input();
  pass(0.3);
  const double before = this->idle();
  EXPECT_GE(before, 0.25);
  this->world_.input();
  EXPECT_LT(this->idle(), before);
  pass(0.1);
  EXPECT_GE(this->idle(), 0.09);
}

}  // namespace
}  // namespace norvane
