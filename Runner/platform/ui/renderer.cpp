#include "platform/ui/renderer.h"

#include <string>

#include <gtk/gtk.h>

#include "platform/linux/glib_handles.h"
#include "platform/linux/process.h"
#include "platform/log.h"

namespace norvane {
namespace {

constexpr const char* kVariable = "FLUTTER_LINUX_RENDERER";

/// Why the display cannot draw with OpenGL; null when it can.
GErrorPtr whyNoGl() {
  GtkWidget* const probe = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_realize(probe);
  GError* raised = nullptr;
  const GObjectPtr<GdkGLContext> context(
      gdk_window_create_gl_context(gtk_widget_get_window(probe), &raised));
  if (context) gdk_gl_context_realize(context.get(), &raised);
  gtk_widget_destroy(probe);
  return GErrorPtr(raised);
}

}  // namespace

void chooseRenderer() {
  if (environmentVariable(kVariable)) return;
  const GErrorPtr error = whyNoGl();
  if (!error) return;
  g_setenv(kVariable, "software", FALSE);  // for the second engine as well, so it stays
  NSLog(std::string("[Norvane] the UI is drawn in software: ") + error->message);
}

}  // namespace norvane
