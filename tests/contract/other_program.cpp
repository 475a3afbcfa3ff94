#include "other_program.h"

#include <gio/gio.h>

#include "platform/gtk/glib_handles.h"
#include "real_desktop.h"

namespace norvane {

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
  const std::unique_ptr<GBytes, GlibDeleter<g_bytes_unref>> owned(output);
  if (!output || !g_subprocess_get_successful(program.get())) return std::nullopt;
  gsize size = 0;
  const auto* text = static_cast<const char*>(g_bytes_get_data(output, &size));
  return std::string(text ? text : "", size);
}

}  // namespace norvane
