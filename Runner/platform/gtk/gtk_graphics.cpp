#include "platform/gtk/gtk_graphics.h"

#include <filesystem>
#include <system_error>

#include <gtk/gtk.h>

namespace norvane {
namespace {

constexpr int kPaintedSide = 64;              // pixels; drawn smaller
constexpr NSSize kNaturalSymbolSize{16, 16};  // of the icon theme's symbols

/// The icon theme's icon for a symbol of the home system's; null when it is not one of those that
/// the host asks for.
const char* themeIconFor(const std::string& symbol) {
  return symbol == "key.fill" ? "dialog-password-symbolic" : nullptr;
}

}  // namespace

GtkGraphics::GtkGraphics(const std::string& bundlePath)
    : resources_(bundlePath + "/Contents/Resources") {
  // The application's icon, for where it is not installed.
  gtk_icon_theme_append_search_path(gtk_icon_theme_get_default(), (resources_ + "/icons").c_str());
}

std::shared_ptr<NSImage> GtkGraphics::imageNamed(const std::string& name) {
  const std::string path = resources_ + '/' + name + "-symbolic.svg";
  std::error_code unreadable;
  if (!std::filesystem::is_regular_file(path, unreadable)) return nullptr;
  return std::make_shared<PixbufImage>(path, NSSize{kPaintedSide, kPaintedSide}, [path] {
    return Pixbuf::adopt(
        gdk_pixbuf_new_from_file_at_size(path.c_str(), kPaintedSide, kPaintedSide, nullptr));
  });
}

std::shared_ptr<NSImage> GtkGraphics::imageWithSystemSymbolName(
    const std::string& name, const std::string& /*accessibilityDescription*/) {
  GtkIconTheme* theme = gtk_icon_theme_get_default();
  const char* icon = themeIconFor(name);
  if (!icon || !gtk_icon_theme_has_icon(theme, icon)) return nullptr;
  return std::make_shared<PixbufImage>(icon, kNaturalSymbolSize, [theme, icon] {
    return Pixbuf::adopt(
        gtk_icon_theme_load_icon(theme, icon, kPaintedSide, GTK_ICON_LOOKUP_FORCE_SIZE, nullptr));
  });
}

}  // namespace norvane
