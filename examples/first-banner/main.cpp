#include <velto/gtk/VeltoGtk.h>
#include <velto/velto.h>
#if __has_include(<adwaita.h>)
#include <adwaita.h>
#endif

struct Ads : velto::VeltoBannerViewControllerDelegate {
  std::shared_ptr<velto::UIViewController> host;
  std::shared_ptr<velto::VeltoBannerViewController> banner;

  std::shared_ptr<velto::UIViewController> presentViewController() override { return host; }
  void veltoBannerViewControllerDidFail(velto::VeltoBannerViewControllerPrivate&,
                                        const velto::VeltoErrorAd& error) override {
    g_printerr("no banner: %s\n", error.descriptionError().value_or("unknown").c_str());
  }
};

static void start(GtkApplication* application, const std::shared_ptr<Ads>* ads) {
  if ((*ads)->banner) return;  // started once more: the window is there
  GtkWidget* slot = velto::gtk::adSlot();
  GtkWidget* page = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  GtkWidget* text = gtk_label_new("A page of your application");
  gtk_widget_set_vexpand(text, TRUE);
#ifdef ADW_MAJOR_VERSION
  GtkWidget* window = adw_application_window_new(application);
  gtk_box_append(GTK_BOX(page), adw_header_bar_new());
  adw_application_window_set_content(ADW_APPLICATION_WINDOW(window), page);
#else
  GtkWidget* window = gtk_application_window_new(application);
  gtk_window_set_child(GTK_WINDOW(window), page);
#endif
  gtk_box_append(GTK_BOX(page), text);
  gtk_box_append(GTK_BOX(page), slot);
  gtk_window_set_default_size(GTK_WINDOW(window), 480, 320);

  velto::gtk::install({.applicationIdentifier = "org.example.first"});
  velto::VeltoFramework::addVeltoKey("your-publisher-key");
  (*ads)->host = velto::gtk::hostViewController(slot);
  (*ads)->banner = velto::VeltoBannerViewController::initWithDelegate(*ads, velto::VeltoBannerSize320x50,
                                                                      velto::VeltoBannerPositionBottom);
  (*ads)->banner->load();
  gtk_window_present(GTK_WINDOW(window));
}

int main(int count, char** words) {
  auto ads = std::make_shared<Ads>();
#ifdef ADW_MAJOR_VERSION
  adw_init();
#endif
  GtkApplication* application = gtk_application_new("org.example.first", G_APPLICATION_DEFAULT_FLAGS);
  g_signal_connect(application, "activate", G_CALLBACK(start), &ads);
  return g_application_run(G_APPLICATION(application), count, words);
}
