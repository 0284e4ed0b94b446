// What tests of widgets share: the toolkit's complaints are failures, frames can be waited for, a camera.
#pragma once

#include "velto/ads/VeltoAd.h"

#include "../support/AdWindow.h"
#include "../support/Delegates.h"

namespace velto::test {

// A real one while it lives, where the display has none. It has taken over all windows by then.
struct WindowManager {
  WindowManager() {
    while (const auto line = process.line())
      if (line == "up") return;
    ADD_FAILURE() << "no openbox";
  }
  // Asked to end it hands the screen back; killed it may still be given the next window to map.
  ~WindowManager() {
    process.signal(SIGTERM);
    process.exitCode();
  }
  Process process{{"openbox", "--sm-disable", "--startup", "echo up"}};
};

class DisplayTest : public testing::Test {
 protected:
  DisplayTest() {
    gtk_init();
    // What the toolkit forbids is a failure, also where it goes on.
    g_log_set_always_fatal(GLogLevelFlags(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    gtk::install({.applicationIdentifier = "org.example.display",
                  .refusedToOpen = [this](const auto& address) { refused.push_back(address); },
                  .leastTimeUnderTouch = {}});
  }
  ~DisplayTest() override { gtk::uninstall(); }

  std::vector<std::string> refused;  // what ads were not let open

  // Lets what was asked for come to the screen.
  static void runFrames(GtkWidget* widget, int count = 3) {
    int left = count;
    const auto tick = [](GtkWidget*, GdkFrameClock*, gpointer counted) -> gboolean {
      return --*static_cast<int*>(counted) > 0;
    };
    gtk_widget_add_tick_callback(widget, tick, &left, nullptr);
    ASSERT_TRUE(runUntil([&] { return left <= 0; }));
  }
  // The first widget of that type, itself included.
  static GtkWidget* find(GtkWidget* within, const char* type) {
    if (std::string(G_OBJECT_TYPE_NAME(within)) == type) return within;
    for (auto* child = gtk_widget_get_first_child(within); child; child = gtk_widget_get_next_sibling(child))
      if (auto* found = find(child, type)) return found;
    return nullptr;
  }
  // An interstitial that is ready, with a first-seconds timer.
  static std::shared_ptr<VeltoInterstitialViewController> ready(
      const std::shared_ptr<RecordingInterstitialDelegate>& told, double seconds = 0) {
    auto made = VeltoInterstitialViewController::initWithDelegate(told);
    made->vc()->fetchBannerSuccess(VeltoAd::adWithHTML("<input autofocus>", {}, nullptr, seconds));
    told->heard.clear();
    return made;
  }
  static bool heardLast(const RecordingInterstitialDelegate& told, const std::string& what) {
    return runUntil([&] { return told.heardLast(what); });
  }
  // A widget of one colour and at least that size.
  static GtkWidget* painted(int width, int height, double red, double green, double blue) {
    struct Color {
      double parts[3];
    };
    auto* area = gtk_drawing_area_new();
    gtk_widget_set_size_request(area, width, height);
    const auto draw = [](GtkDrawingArea*, cairo_t* context, int, int, gpointer data) {
      const auto* color = static_cast<Color*>(data)->parts;
      cairo_set_source_rgb(context, color[0], color[1], color[2]);
      cairo_paint(context);
    };
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), draw, new Color{{red, green, blue}},
                                   [](gpointer data) { delete static_cast<Color*>(data); });
    return area;
  }

  // The window as it was painted last.
  struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;
    uint32_t at(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)] & 0xffffff; }
    int count(uint32_t color) const {
      int found = 0;
      for (const uint32_t pixel : pixels) found += (pixel & 0xffffff) == color;
      return found;
    }
  };
  static Picture pictureOf(GtkWindow* window) {
    auto* widget = GTK_WIDGET(window);
    Picture picture{gtk_widget_get_width(widget), gtk_widget_get_height(widget), {}};
    auto* paintable = gtk_widget_paintable_new(widget);
    auto* snapshot = gtk_snapshot_new();
    graphene_rect_t all;  // shadows included
    if (!gtk_widget_compute_bounds(widget, widget, &all)) return picture;
    gdk_paintable_snapshot(paintable, snapshot, all.size.width, all.size.height);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    g_object_unref(paintable);
    picture.pixels.resize(size_t(picture.width) * size_t(picture.height));
    if (!node) return picture;
    const auto bounds =
        GRAPHENE_RECT_INIT(-all.origin.x, -all.origin.y, float(picture.width), float(picture.height));
    auto* texture = gsk_renderer_render_texture(gtk_native_get_renderer(GTK_NATIVE(window)), node, &bounds);
    gdk_texture_download(texture, reinterpret_cast<guchar*>(picture.pixels.data()),
                         size_t(picture.width) * 4);
    g_object_unref(texture);
    gsk_render_node_unref(node);
    return picture;
  }
};

}  // namespace velto::test
