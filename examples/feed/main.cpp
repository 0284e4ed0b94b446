// A feed with ads between its rows: a list of two hundred articles that makes few rows and uses them again.
// Each ad has a slot of its own, which moves into the row that shows it.
#include <velto/gtk/VeltoGtk.h>
#include <velto/velto.h>

#include <string>
#include <vector>

namespace {

constexpr guint articles = 200;
constexpr guint firstAd = 3;  // row
constexpr guint adEvery = 20;

struct Ad : velto::VeltoBannerViewControllerDelegate {
  GtkWidget* slot = GTK_WIDGET(g_object_ref_sink(velto::gtk::adSlot({.room = velto::CGSize{320, 50}})));
  std::shared_ptr<velto::VeltoBannerViewController> banner;  // made when its row is first shown

  ~Ad() override {
    banner.reset();
    g_object_unref(slot);
  }
  std::shared_ptr<velto::UIViewController> presentViewController() override {
    return velto::gtk::hostViewController(slot);
  }
};

using Feed = std::vector<std::shared_ptr<Ad>>;

bool isAd(guint row) {
  return row % adEvery == firstAd;
}

void bind(GtkListItemFactory*, GtkListItem* item, Feed* feed) {
  const guint row = gtk_list_item_get_position(item);
  if (!isAd(row)) {
    auto* label = gtk_label_new(("Article " + std::to_string(row)).c_str());
    gtk_widget_set_size_request(label, -1, 56);
    return gtk_list_item_set_child(item, label);
  }
  const auto& ad = (*feed)[row / adEvery];
  gtk_list_item_set_child(item, ad->slot);
  if (ad->banner) return;  // it has been here before
  ad->banner = velto::VeltoBannerViewController::initWithDelegate(ad, velto::VeltoBannerSize320x50,
                                                                  velto::VeltoBannerPositionTop);
  ad->banner->load();
}

void unbind(GtkListItemFactory*, GtkListItem* item) {
  gtk_list_item_set_child(item, nullptr);
}

void start(GtkApplication* application, Feed* feed) {
  if (!feed->empty()) return;
  velto::gtk::install({.applicationIdentifier = "org.example.feed"});
  velto::VeltoFramework::addVeltoKey("your-publisher-key");
  auto* rows = gtk_string_list_new(nullptr);
  for (guint row = 0; row < articles; ++row) {
    gtk_string_list_append(rows, "");
    if (isAd(row)) feed->push_back(std::make_shared<Ad>());
  }
  auto* factory = gtk_signal_list_item_factory_new();
  g_signal_connect(factory, "bind", G_CALLBACK(bind), feed);
  g_signal_connect(factory, "unbind", G_CALLBACK(unbind), nullptr);
  auto* selection = GTK_SELECTION_MODEL(gtk_no_selection_new(G_LIST_MODEL(rows)));
  auto* scrolled = gtk_scrolled_window_new();
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), gtk_list_view_new(selection, factory));
  auto* window = GTK_WINDOW(gtk_application_window_new(application));
  gtk_window_set_default_size(window, 400, 640);
  gtk_window_set_child(window, scrolled);
  gtk_window_present(window);
}

}  // namespace

int main(int count, char** words) {
  Feed feed;
  GtkApplication* application = gtk_application_new("org.example.feed", G_APPLICATION_DEFAULT_FLAGS);
  g_signal_connect(application, "activate", G_CALLBACK(start), &feed);
  const int code = g_application_run(G_APPLICATION(application), count, words);
  feed.clear();
  velto::gtk::uninstall();
  g_object_unref(application);
  return code;
}
