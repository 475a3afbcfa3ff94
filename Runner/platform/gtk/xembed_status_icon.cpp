#include "platform/gtk/xembed_status_icon.h"

#include <utility>

#include <gtk/gtk.h>

namespace norvane {
namespace {

constexpr int kIconSide = 22;

/// Without this the toolkit paints no symbol in the panel's colour.
GObjectPtr<GIcon> iconOf(const std::string& templateIcon) {
  if (templateIcon.starts_with('/')) {
    const GObjectPtr<GFile> file(g_file_new_for_path(templateIcon.c_str()));
    return GObjectPtr<GIcon>(g_file_icon_new(file.get()));
  }
  return GObjectPtr<GIcon>(g_themed_icon_new(templateIcon.c_str()));
}

}  // namespace

// Deprecated without a successor; the panels that know nothing else are still around.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

XembedStatusIcon::XembedStatusIcon(const StatusItemContent& content,
                                   std::function<void(unsigned time)> clicked)
    : clicked_(std::move(clicked)), icon_(gtk_status_icon_new()), menu_(gtk_menu_new()) {
  const auto activated = +[](GtkStatusIcon*, gpointer self) {
    const auto action = static_cast<XembedStatusIcon*>(self)->clicked_;  // it may go meanwhile
    action(gtk_get_current_event_time());
  };
  g_signal_connect(icon_.get(), "activate", G_CALLBACK(activated), this);
  const auto chosen = +[](GtkMenuItem*, const StatusMenuItem* item) { item->action(); };
  for (const StatusMenuItem& item : content.menu) {
    GtkWidget* child = gtk_menu_item_new_with_label(item.label.c_str());
    g_signal_connect(child, "activate", G_CALLBACK(chosen), const_cast<StatusMenuItem*>(&item));
    gtk_menu_shell_append(GTK_MENU_SHELL(menu_), child);
  }
  gtk_widget_show_all(menu_);
  const auto asked = +[](GtkStatusIcon* icon, guint button, guint time, GtkMenu* menu) {
    gtk_menu_popup(menu, nullptr, nullptr, gtk_status_icon_position_menu, icon, button, time);
  };
  g_signal_connect(icon_.get(), "popup-menu", G_CALLBACK(asked), menu_);
  show(content);
}

XembedStatusIcon::~XembedStatusIcon() {
  g_signal_handlers_disconnect_by_data(icon_.get(), this);
  g_signal_handlers_disconnect_by_data(icon_.get(), menu_);
  gtk_widget_destroy(menu_);
  gtk_status_icon_set_visible(icon_.get(), FALSE);
}

void XembedStatusIcon::show(const StatusItemContent& content) {
  if (const std::string icon = content.templateIcon(); !icon.empty()) {
    gtk_status_icon_set_from_gicon(icon_.get(), iconOf(icon).get());
  } else if (const Pixbuf pixels = content.pixels(kIconSide)) {
    gtk_status_icon_set_from_pixbuf(icon_.get(), pixels.get());
  }
  gtk_status_icon_set_title(icon_.get(), content.name().c_str());
  gtk_status_icon_set_tooltip_text(icon_.get(), content.toolTip.c_str());
}

#pragma GCC diagnostic pop

}  // namespace norvane
