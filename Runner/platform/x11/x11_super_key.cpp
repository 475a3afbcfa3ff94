#include "platform/x11/x11_super_key.h"

#include <memory>
#include <string>

#include <X11/Xlib.h>
#include <gdk/gdkx.h>

#include "platform/linux/glib_handles.h"
#include "platform/x11/x11_properties.h"

namespace norvane {
namespace {

using SchemaPtr = std::unique_ptr<GSettingsSchema, Deleter<g_settings_schema_unref>>;

std::string windowManagerName() {
  const XErrorsForgiven forgiven;
  return xText(xNumber(gdk_x11_get_default_root_xwindow(), "_NET_SUPPORTING_WM_CHECK"),
               "_NET_WM_NAME");
}

/// The schema of the window managers that have an overlay key; null for others. The desktops built
/// on mutter keep its settings, under names such as "GNOME Shell" and "Mutter(Gala)".
const char* overlayKeySchema(const std::string& windowManager) {
  if (windowManager.find("Muffin") != std::string::npos) return "org.cinnamon.muffin";
  if (windowManager == "GNOME Shell" || windowManager.starts_with("Mutter")) {
    return "org.gnome.mutter";
  }
  return nullptr;
}

}  // namespace

bool windowManagerKeepsSuper() {
  const char* id = overlayKeySchema(windowManagerName());
  GSettingsSchemaSource* installed = g_settings_schema_source_get_default();
  if (!id || !installed) return false;
  const SchemaPtr schema(g_settings_schema_source_lookup(installed, id, TRUE));
  // To read what a schema does not have would end the process.
  if (!schema || !g_settings_schema_has_key(schema.get(), "overlay-key")) return false;
  const GObjectPtr<GSettings> settings(g_settings_new_full(schema.get(), nullptr, nullptr));
  const GVariantPtr key(g_settings_get_value(settings.get(), "overlay-key"));
  return g_variant_is_of_type(key.get(), G_VARIANT_TYPE_STRING) &&
         std::string(g_variant_get_string(key.get(), nullptr)).starts_with("Super");
}

}  // namespace norvane
