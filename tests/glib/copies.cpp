// An application with a copy of the library of its own that uses velto-glib, too: copies KEY-FILE. Ads of both come to one window,
// whose content stays the application's.
#include <velto-glib.h>
#include <velto/gtk/VeltoGtk.h>
#include <velto/velto.h>

namespace {

using namespace velto;

struct Ads : VeltoBannerViewControllerDelegate, VeltoInterstitialViewControllerDelegate {
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<UIViewController> presentViewController() override { return host; }
};

// Two minutes at most, as tests of the library have it.
void runUntil(const std::function<bool()>& holds) {
  const auto tooLong = [](gpointer) -> gboolean { g_error("copies: nothing comes"); };
  const guint limit = g_timeout_add_seconds(120, tooLong, nullptr);
  while (!holds()) g_main_context_iteration(nullptr, TRUE);
  g_source_remove(limit);
}

std::string value(GKeyFile* file, const char* name) {
  char* text = g_key_file_get_string(file, "Velto", name, nullptr);
  const std::string found = text ? text : "";
  g_free(text);
  return found;
}

void installOwn(GKeyFile* file) {
  std::string map = value(file, "host-map");
  map.pop_back();  // its semicolon
  const auto equals = map.find('=');
  gtk::install({.applicationIdentifier = value(file, "application-id"),
                .caFile = value(file, "ca-file"),
                .hostMap = {{map.substr(0, equals), map.substr(equals + 1)}}});
  VeltoFramework::addVeltoKey(value(file, "publisher-key"));
}

void startOther(GKeyFile* file) {
  GError* error = nullptr;
  VeltoClient* client = velto_client_new_from_key_file(file, &error);
  if (!client || !velto_client_start(client, &error)) g_error("copies: %s", error->message);
  g_object_unref(client);
}

void expect(bool holds, const char* what) {
  if (!holds) g_error("copies: not so: %s", what);
}

}  // namespace

int main(int count, char** words) {
  if (count != 2) return 2;
  g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
  gtk_init();
  GKeyFile* file = g_key_file_new();
  expect(g_key_file_load_from_file(file, words[1], G_KEY_FILE_NONE, nullptr), "the file can be read");
  installOwn(file);
  startOther(file);
  g_key_file_unref(file);

  auto* window = GTK_WINDOW(gtk_window_new());
  auto* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  auto* slot = gtk::adSlot();
  auto* other = velto_banner_new(VELTO_BANNER_SIZE_BANNER);
  gtk_box_append(GTK_BOX(content), slot);
  gtk_box_append(GTK_BOX(content), other);
  gtk_window_set_child(window, content);
  gtk_window_set_default_size(window, 480, 600);
  gtk_window_present(window);

  const auto ads = std::make_shared<Ads>();
  ads->host = gtk::hostViewController(slot);
  auto banner =
      VeltoBannerViewController::initWithDelegate(ads, VeltoBannerSize320x50, VeltoBannerPositionTop);
  banner->load();
  velto_banner_load(VELTO_BANNER(other));
  runUntil([&] {
    return banner->state() == VeltoBannerStateShown &&
           velto_banner_get_state(VELTO_BANNER(other)) == VELTO_BANNER_STATE_SHOWN;
  });

  auto interstitial = VeltoInterstitialViewController::initWithDelegate(ads);
  VeltoInterstitial* between = velto_interstitial_new();
  interstitial->load();
  velto_interstitial_load(between);
  runUntil([&] {
    return interstitial->isReady() && velto_interstitial_get_state(between) == VELTO_INTERSTITIAL_STATE_READY;
  });
  interstitial->show();
  velto_interstitial_present(between, content);
  runUntil([&] {
    return interstitial->state() == VeltoInterstitialStatePresented &&
           velto_interstitial_get_state(between) == VELTO_INTERSTITIAL_STATE_PRESENTED;
  });
  expect(gtk_widget_get_mapped(content) && gtk_widget_get_mapped(slot), "the window keeps its content");
  auto* inner = gtk_widget_get_parent(content);
  expect(GTK_IS_OVERLAY(inner) && GTK_IS_OVERLAY(gtk_widget_get_parent(inner)),
         "each copy knows only its own things at the window");

  // Other content, which neither copy may lose.
  auto* next = gtk_label_new("next");
  gtk_window_set_child(window, next);
  runUntil([&] { return gtk_widget_get_mapped(next); });
  g_object_unref(between);
  interstitial.reset();
  banner.reset();
  gtk_window_destroy(window);
  gtk::uninstall();
  return 0;
}
