// What any GTK window of the main window's size costs.
#include <gtk/gtk.h>

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), "Plain window");
  gtk_window_set_default_size(GTK_WINDOW(window), 940, 600);
  gtk_container_add(GTK_CONTAINER(window), gtk_label_new("Plain window"));
  gtk_widget_show_all(window);
  gtk_main();
}
