#include "real_desktop.h"

#include <stdexcept>

#include <X11/extensions/XTest.h>
#include <gtk/gtk.h>

#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

class Toolkit : public testing::Environment {
 public:
  void SetUp() override { ASSERT_TRUE(gtk_init_check(nullptr, nullptr)); }
};

// The autostart folder is emptied: never the person's own.
[[maybe_unused]] const bool kOwnFolder =
    g_setenv("XDG_CONFIG_HOME", (std::string(g_get_user_runtime_dir()) + "/config").c_str(), TRUE);

[[maybe_unused]] const auto* toolkit = testing::AddGlobalTestEnvironment(new Toolkit);

}  // namespace

std::optional<std::string> outputOf(std::vector<const char*> command) {
  command.push_back(nullptr);
  const GObjectPtr<GSubprocess> program(
      g_subprocess_newv(command.data(),
                        static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                      G_SUBPROCESS_FLAGS_STDERR_SILENCE),
                        nullptr));
  GBytes* output = nullptr;
  const auto ended = +[](GObject* ran, GAsyncResult* result, gpointer to) {
    g_subprocess_communicate_finish(G_SUBPROCESS(ran), result, static_cast<GBytes**>(to), nullptr,
                                    nullptr);
  };
  g_subprocess_communicate_async(program.get(), nullptr, nullptr, ended, &output);
  const auto hasEnded = [&] { return output != nullptr; };
  if (!await(hasEnded)) {
    g_subprocess_force_exit(program.get());
    await(hasEnded);
    ADD_FAILURE() << command.front() << " had to be ended";
  }
  const std::unique_ptr<GBytes, Deleter<g_bytes_unref>> owned(output);
  if (!output || !g_subprocess_get_successful(program.get())) return std::nullopt;
  gsize size = 0;
  const auto* text = static_cast<const char*>(g_bytes_get_data(output, &size));
  return std::string(text ? text : "", size);
}

OtherClient::OtherClient() : display_(XOpenDisplay(nullptr)) {
  if (!display_) throw std::runtime_error("no display; run the tests with tools/with-desktop");
}

OtherClient::~OtherClient() { XCloseDisplay(display_); }

void OtherClient::key(unsigned keyCode, bool down) {
  XTestFakeKeyEvent(display_, keyCode, down, CurrentTime);
  XSync(display_, False);
}

void OtherClient::press(unsigned keyCode, const std::vector<unsigned>& modifierKeys) {
  for (const unsigned modifier : modifierKeys) key(modifier, true);
  key(keyCode, true);
  key(keyCode, false);
  for (const unsigned modifier : modifierKeys) key(modifier, false);
}

}  // namespace norvane
