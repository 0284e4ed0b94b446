// Uses every entry point of the Linux platform. The install test compiles and links it, and runs it only with
// the name of a module, to hear whether the library would find it.
#include <dlfcn.h>
#include <velto/gtk/VeltoGtk.h>
#include <velto/platform/Platform.h>
#include <velto/platform/ViewSystem.h>
#include <velto/velto.h>

#include <string>

int main(int count, char** words) {
  const std::string module = count == 2 ? words[1] : "";
  if (module == "velto-page.so") {  // which is opened in other processes
    velto::gtk::install({.applicationIdentifier = "org.example.consumer"});
    const auto failure = velto::Platform::current().views().webContentFailure();
    velto::gtk::uninstall();
    return failure && failure->localizedDescription.find(module) != std::string::npos ? 1 : 0;
  }
  if (!module.empty()) return dlopen(module.c_str(), RTLD_NOW) ? 0 : 1;
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
