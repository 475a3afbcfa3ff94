// The main loop of the simulated desktop, which is that of the real one on Linux too.

#include <glib.h>

#include "contract.h"

namespace norvane {

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

}  // namespace norvane
