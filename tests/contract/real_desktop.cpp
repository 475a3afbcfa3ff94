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
  bool late = false;
  const guint timer = g_timeout_add_seconds(
      10,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_CONTINUE;
      },
      &late);
  while (!condition() && !late) g_main_context_iteration(nullptr, TRUE);
  g_source_remove(timer);
  return !late;
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
