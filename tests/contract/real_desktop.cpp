#include "real_desktop.h"

#include <stdexcept>

#include <X11/extensions/XTest.h>
#include <gtk/gtk.h>

namespace norvane {
namespace {

class Toolkit : public testing::Environment {
 public:
  void SetUp() override {
    if (!gtk_init_check(nullptr, nullptr)) throw std::runtime_error("no display for the toolkit");
  }
};

[[maybe_unused]] const auto* toolkit = testing::AddGlobalTestEnvironment(new Toolkit);

}  // namespace

bool await(const std::function<bool()>& condition) {
  // What other programs do is no event of this loop, so it looks again now and then.
  const guint tick = g_timeout_add(
      10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  const gint64 end = g_get_monotonic_time() + 10 * G_TIME_SPAN_SECOND;
  bool holds = condition();
  while (!holds && g_get_monotonic_time() < end) {
    g_main_context_iteration(nullptr, TRUE);
    holds = condition();
  }
  g_source_remove(tick);
  return holds;
}

OtherClient::OtherClient() : display_(XOpenDisplay(nullptr)) {
  if (!display_) throw std::runtime_error("no display; run the tests with tools/with-desktop");
}

OtherClient::~OtherClient() { XCloseDisplay(display_); }

void OtherClient::key(unsigned keyCode, bool down) {
  XTestFakeKeyEvent(display_, keyCode, down, CurrentTime);
  XSync(display_, False);
}

void OtherClient::press(unsigned keyCode, std::initializer_list<unsigned> modifierKeys) {
  for (const unsigned modifier : modifierKeys) key(modifier, true);
  key(keyCode, true);
  key(keyCode, false);
  for (const unsigned modifier : modifierKeys) key(modifier, false);
}

void OtherClient::click(int x, int y) {
  XTestFakeMotionEvent(display_, -1, x, y, CurrentTime);
  XTestFakeButtonEvent(display_, 1, True, CurrentTime);
  XTestFakeButtonEvent(display_, 1, False, CurrentTime);
  XSync(display_, False);
}

}  // namespace norvane
