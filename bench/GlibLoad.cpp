// As Load.cpp, through the GObject library and a banner widget: what that layer adds.
#include <velto-glib.h>

#include "LoadProgram.h"

namespace {

using namespace velto;

class WidgetLoader : public bench::Loader {
 public:
  WidgetLoader(const bench::Server& server, GtkWindow* window) {
    const std::string address = "127.0.0.1:" + server.port;
    auto* client = velto_client_new("org.example.bench");
    velto_client_set_publisher_key(client, server.key.c_str());
    auto* file = g_file_new_for_path(server.caFile.c_str());
    velto_client_set_ca_file(client, file);
    GVariantBuilder map;
    g_variant_builder_init(&map, G_VARIANT_TYPE("a{ss}"));
    g_variant_builder_add(&map, "{ss}", "*.velto.example", address.c_str());
    velto_client_set_host_map(client, g_variant_builder_end(&map));
    GError* error = nullptr;
    if (!velto_client_start(client, &error)) bench::giveUp(error->message);
    g_object_unref(file);
    g_object_unref(client);
    banner_ = VELTO_BANNER(velto_banner_new(VELTO_BANNER_SIZE_BANNER));
    gtk_overlay_add_overlay(GTK_OVERLAY(gtk_window_get_child(window)), GTK_WIDGET(banner_));
    g_signal_connect_swapped(banner_, "loaded", G_CALLBACK(loaded), this);
    g_signal_connect(banner_, "failed", G_CALLBACK(failed), nullptr);
    bench::runMainLoopFor(bench::windowSettles);  // the banner joins its window
  }

  void load(std::function<void()> done) override {
    done_ = std::move(done);
    velto_banner_load(banner_);
  }

 private:
  static void loaded(WidgetLoader* self) { self->done_(); }
  static void failed(VeltoBanner*, GError* error) { bench::giveUp(std::string("no ad: ") + error->message); }

  VeltoBanner* banner_;  // the window's
  std::function<void()> done_;
};

}  // namespace

int main(int count, char** words) {
  return bench::runLoads(count, words, [](const bench::Server& server, GtkWindow* window) {
    return std::make_unique<WidgetLoader>(server, window);
  });
}
