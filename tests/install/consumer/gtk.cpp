// Uses every entry point of the Linux platform. The install test compiles and links it; nobody runs it.
#include <velto/gtk/VeltoGtk.h>
#include <velto/velto.h>

int main() {
  gtk_init();
  velto::gtk::install({.applicationIdentifier = "org.example.consumer"});
  GtkWidget* window = gtk_window_new();
  GtkWidget* label = gtk_label_new("label");
  gtk_window_set_child(GTK_WINDOW(window), label);
  const auto controller = velto::gtk::hostViewController(GTK_WINDOW(window));
  const auto view = velto::gtk::hostView(label);
  velto::gtk::uninstall();
  return controller && view ? 0 : 1;
}
