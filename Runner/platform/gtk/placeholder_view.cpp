#include "platform/gtk/placeholder_view.h"

#include <gtk/gtk.h>

namespace norvane {
namespace {

constexpr const char* kStyle =
    ".norvane-card { background: #20242c; border-radius: 14px; border: 1px solid #3d4452; }"
    ".norvane-card label { color: #e8eaf0; }";

GtkWidget* label(const char* markup) {
  GtkWidget* text = gtk_label_new(nullptr);
  gtk_label_set_markup(GTK_LABEL(text), markup);
  gtk_label_set_line_wrap(GTK_LABEL(text), TRUE);
  gtk_label_set_justify(GTK_LABEL(text), GTK_JUSTIFY_CENTER);
  return text;
}

}  // namespace

GtkWidget* makePlaceholderView(bool isPanel) {
  GtkWidget* card = gtk_event_box_new();
  if (isPanel) {
    GtkCssProvider* provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, kStyle, -1, nullptr);
    gtk_style_context_add_provider_for_screen(gdk_screen_get_default(),
                                              GTK_STYLE_PROVIDER(provider),
                                              GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
    gtk_style_context_add_class(gtk_widget_get_style_context(card), "norvane-card");
  }
  GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
  gtk_widget_set_valign(texts, GTK_ALIGN_CENTER);
  gtk_container_add(GTK_CONTAINER(texts), label(isPanel ? "<big><b>Quick Access</b></big>"
                                                        : "<big><b>Norvane</b></big>"));
  gtk_container_add(GTK_CONTAINER(texts),
                    label("The user interface shows here.\nThis host has no UI engine yet."));
  gtk_container_add(GTK_CONTAINER(card), texts);
  gtk_widget_show_all(card);
  return card;
}

}  // namespace norvane
