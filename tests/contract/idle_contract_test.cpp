// The time since the person's last input: simulated, the X server's, and the desktop's.

#include <atomic>
#include <cstdlib>

#include <gtest/gtest.h>

#include "bus_service.h"
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

TEST(WaylandIdleTime, TheDesktopTellsItAndWhereItDoesNotTheApplicationsOwnInputCounts) {
  ::setenv("XDG_SESSION_TYPE", "wayland", 1);
  const IdleTime source;
  const auto idle = [&] { return source.secondsSinceLastEventType(kCGEventMouseMoved); };
  std::atomic<guint32> told = 0;
  const auto tell = [&](const char* type) {
    return [&told, type](const auto&, GVariant*, GDBusMethodInvocation* invocation) {
      const bool isWide = *type == 't';
      g_dbus_method_invocation_return_value(
          invocation, isWide ? g_variant_new("(t)", guint64{told}) : g_variant_new("(u)", +told));
    };
  };
  pass(0.1);
  EXPECT_GE(idle(), 0.09);
  {
    const BusService alwaysZero("org.freedesktop.ScreenSaver",
                                {{"/org/freedesktop/ScreenSaver",
                                  "<interface name='org.freedesktop.ScreenSaver'><method "
                                  "name='GetSessionIdleTime'><arg type='u' direction='out'/>"
                                  "</method></interface>"}},
                                tell("u"));
    EXPECT_GE(idle(), 0.09);
    told = 1;
    EXPECT_LT(idle(), 1);  // that cannot be: the application is not that old
    told = 0;
    EXPECT_EQ(idle(), 0);
  }
  const BusService monitor("org.gnome.Mutter.IdleMonitor",
                           {{"/org/gnome/Mutter/IdleMonitor/Core",
                             "<interface name='org.gnome.Mutter.IdleMonitor'><method "
                             "name='GetIdletime'><arg type='t' direction='out'/></method>"
                             "</interface>"}},
                           tell("t"));
  told = 60500;
  EXPECT_EQ(idle(), 60.5);
  ::unsetenv("XDG_SESSION_TYPE");
}

}  // namespace
}  // namespace norvane
