#include "platform/explorer/widgets.h"

namespace norvane {
namespace {

constexpr int kPadding = 6;

}  // namespace

GtkWidget* makeLabel(const char* text, const char* styleClass) {
  GtkWidget* label = gtk_label_new(text);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_line_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  if (styleClass) setClass(label, styleClass);
  return label;
}

GtkWidget* makeLabelFor(GtkWidget* widget, const char* mnemonic) {
  GtkWidget* label = gtk_label_new_with_mnemonic(mnemonic);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_mnemonic_widget(GTK_LABEL(label), widget);
  return label;
}

GtkWidget* makeHeadline(const char* text) { return makeLabel(text, "norvane-headline"); }

GtkWidget* makeCodeView(bool isEditable) {
  GtkWidget* view = gtk_text_view_new();
  GtkTextView* const text = GTK_TEXT_VIEW(view);
  gtk_text_view_set_monospace(text, TRUE);
  gtk_text_view_set_wrap_mode(text, GTK_WRAP_WORD_CHAR);
  gtk_text_view_set_accepts_tab(text, FALSE);
  gtk_text_view_set_editable(text, isEditable);
  gtk_text_view_set_cursor_visible(text, isEditable);
  gtk_text_view_set_left_margin(text, kPadding);
  gtk_text_view_set_right_margin(text, kPadding);
  gtk_text_view_set_top_margin(text, kPadding);
  gtk_text_view_set_bottom_margin(text, kPadding);
  return view;
}

GtkWidget* scrolled(GtkWidget* child) {
  GtkWidget* window = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(window), GTK_POLICY_NEVER,
                                 GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_shadow_type(GTK_SCROLLED_WINDOW(window), GTK_SHADOW_IN);
  gtk_container_add(GTK_CONTAINER(window), child);
  return window;
}

GtkWidget* ofAnySize(GtkWidget* child) {
  GtkWidget* window = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_container_add(GTK_CONTAINER(window), child);
  gtk_widget_show_all(window);
  return window;
}

void setText(GtkWidget* textView, const char* text) {
  gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(textView)), text, -1);
}

void loadStyle() {
  static const bool isLoaded = [] {
    GtkCssProvider* provider = gtk_css_provider_new();
    gtk_css_provider_load_from_resource(provider, "/cn/kestrio/norvane/explorer/explorer.css");
    gtk_style_context_add_provider_for_screen(gdk_screen_get_default(),
                                              GTK_STYLE_PROVIDER(provider),
                                              GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
    return true;
  }();
  (void)isLoaded;
}

}  // namespace norvane
