#include "platform/ui/message_view.h"

#include <gtk/gtk.h>

namespace norvane {
namespace {

constexpr const char* kStyle =
    ".norvane-card { background: #20242c; border-radius: 14px; border: 1px solid #3d4452; }"
    ".norvane-card label { color: #e8eaf0; }";

GtkWidget* label(const char* words) {
  GtkWidget* text = gtk_label_new(words);
  gtk_label_set_line_wrap(GTK_LABEL(text), TRUE);
  gtk_label_set_justify(GTK_LABEL(text), GTK_JUSTIFY_CENTER);
  return text;
}

}  // namespace

GtkWidget* makeMessageView(bool isPanel, const std::string& message) {
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
  GtkWidget* headline = label(isPanel ? "Quick Access" : "Norvane");
  PangoAttrList* large = pango_attr_list_new();
  pango_attr_list_insert(large, pango_attr_scale_new(PANGO_SCALE_LARGE));
  pango_attr_list_insert(large, pango_attr_weight_new(PANGO_WEIGHT_BOLD));
  gtk_label_set_attributes(GTK_LABEL(headline), large);
  pango_attr_list_unref(large);
  gtk_container_add(GTK_CONTAINER(texts), headline);
  gtk_container_add(GTK_CONTAINER(texts), label(message.c_str()));
  gtk_container_add(GTK_CONTAINER(card), texts);
  gtk_widget_show_all(card);
  return card;
}

}  // namespace norvane
