#pragma once

#include <memory>

#include <gtk/gtk.h>

namespace norvane {

/// Deletes `object` once `widget` and all that is in it are gone, so that signals of the widgets
/// in it may have it for their data.
template <class T>
void tieTo(GtkWidget* widget, std::unique_ptr<T> object) {
  g_object_set_data_full(G_OBJECT(widget), "norvane-object", object.release(),
                         [](gpointer data) { delete static_cast<T*>(data); });
}

/// `handler` is a function without captures whose last parameter is a T*.
template <class T, class Handler>
void connect(gpointer object, const char* signal, T* self, Handler handler) {
  g_signal_connect(object, signal, G_CALLBACK(+handler), self);
}

inline void setClass(GtkWidget* widget, const char* name) {
  gtk_style_context_add_class(gtk_widget_get_style_context(widget), name);
}

/// What screen readers say where no label stands beside the widget.
inline void setAccessibleName(GtkWidget* widget, const char* name) {
  atk_object_set_name(gtk_widget_get_accessible(widget), name);
}

/// On the left, over several lines where need be.
GtkWidget* makeLabel(const char* text, const char* styleClass = nullptr);
/// Names `widget`, and its underlined letter leads there.
GtkWidget* makeLabelFor(GtkWidget* widget, const char* mnemonic);
GtkWidget* makeHeadline(const char* text);
/// A text of fixed pitch, which the Tab key leaves.
GtkWidget* makeCodeView(bool isEditable);
/// `child` with a frame, scrolled only up and down.
GtkWidget* scrolled(GtkWidget* child);

/// `child`, which has to be scrolled where the window is smaller than it needs: the host chooses
/// the window's size, and large fonts must not. Shown, and all in it.
GtkWidget* ofAnySize(GtkWidget* child);

void setText(GtkWidget* textView, const char* text);

/// Loads the explorer's style sheet, once.
void loadStyle();

}  // namespace norvane
