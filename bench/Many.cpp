// Many banners in one window, in a list that scrolls: what they hold in memory, and how the list scrolls.
//
//   usage: velto-bench-many PORT CA_FILE KEY library|bare memory|scroll COUNT
//
// All of them are asked for at once. For the memory it prints {"pause": 1} once they have loaded and come to rest, and waits
// for a line of input, so that run.py can look. Else it scrolls through the list at a steady pace and back, as a hand does,
// and prints how many frames did not come (missed); then it leaves the first banner for a while and returns, some times, and
// prints how long it took until the banner was painted again (returnMs). Bare, each is a web view
// of its own, which have processes of their own for the memory, and one for all of them for scrolling.
#include "velto/gtk/VeltoGtk.h"
#include "velto/velto.h"

#include <webkit/webkit.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "LoadProgram.h"
#include "Measure.h"
#include "bare/Fetch.h"

namespace {

using namespace velto;

constexpr int width = 400, height = 600, gap = 150;  // points; some three banners are seen at a time
constexpr guint settles = 6000, leaves = 2500;       // milliseconds
constexpr double pace = 1500;                        // points a second
constexpr int returns = 7;

struct List {
  GtkWindow* window;
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, gap);
  GtkWidget* scrolled = gtk_scrolled_window_new();

  explicit List(const char* program) : window(bench::makeWindow(program)) {
    gtk_window_set_default_size(window, width, height);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), box);
    gtk_window_set_child(window, scrolled);
    gtk_window_present(window);
    bench::runMainLoopFor(bench::windowSettles);
  }
  GtkAdjustment* adjustment() const {
    return gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled));
  }
};

// --- the banners

struct Delegate : VeltoBannerViewControllerDelegate {
  Delegate(GtkWidget* slot, int& left) : host(gtk::hostViewController(slot)), toLoad(left) {}
  std::shared_ptr<UIViewController> presentViewController() override { return host; }
  void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override { --toLoad; }
  void veltoBannerViewControllerDidFail(VeltoBannerViewControllerPrivate&,
                                        const VeltoErrorAd& error) override {
    bench::giveUp("no ad: " + error.descriptionError().value_or("unknown error"));
  }
  std::shared_ptr<UIViewController> host;
  int& toLoad;
};

struct Banners {
  int toLoad;
  std::vector<std::shared_ptr<Delegate>> delegates;
  std::vector<std::shared_ptr<VeltoBannerViewController>> banners;

  Banners(const bench::Server& server, const List& list, int count) : toLoad(count) {
    const auto names = VeltoURL::serverNames();
    const std::string address = "127.0.0.1:" + server.port;
    gtk::install({.applicationIdentifier = "org.example.bench",
                  .caFile = server.caFile,
                  .hostMap = {{names.adServer, address}, {names.tracking, address}}});
    VeltoFramework::addVeltoKey(server.key);
    for (int i = 0; i < count; ++i) {
      auto* slot = gtk::adSlot({.room = CGSize{320, 50}});
      gtk_box_append(GTK_BOX(list.box), slot);
      delegates.push_back(std::make_shared<Delegate>(slot, toLoad));
      banners.push_back(VeltoBannerViewController::initWithDelegate(delegates.back(), VeltoBannerSize320x50,
                                                                    VeltoBannerPositionTop));
    }
    bench::runMainLoopFor(bench::windowSettles);
    for (const auto& banner : banners) banner->load();
    while (toLoad > 0) g_main_context_iteration(nullptr, TRUE);
  }
  ~Banners() {
    banners.clear();
    delegates.clear();
    gtk::uninstall();
  }
};

void addBareViews(const std::string& markup, const List& list, int count, bool inOneProcess) {
  static int toLoad = count;
  gpointer first = nullptr;
  for (int i = 0; i < count; ++i) {
    auto* view = GTK_WIDGET(
        g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", inOneProcess ? first : nullptr, nullptr));
    if (!first) first = view;
    gtk_widget_set_size_request(view, 320, 50);
    gtk_box_append(GTK_BOX(list.box), view);
    const auto changed = +[](WebKitWebView*, WebKitLoadEvent event, int* left) {
      if (event == WEBKIT_LOAD_FINISHED) --*left;
    };
    g_signal_connect(view, "load-changed", G_CALLBACK(changed), &toLoad);
    const auto failed =
        +[]() -> gboolean { return TRUE; };  // what the page says with an address is none to load
    g_signal_connect(view, "load-failed", G_CALLBACK(failed), nullptr);
    webkit_web_view_load_html(WEBKIT_WEB_VIEW(view), markup.c_str(), nullptr);
  }
  while (toLoad > 0) g_main_context_iteration(nullptr, TRUE);
}

// --- scrolling

struct Scroll {
  GtkAdjustment* adjustment;
  gint64 last = 0;  // microseconds
  int frames = 0, missed = 0, way = 1;
  bool isOver = false;

  static gboolean next(GtkWidget*, GdkFrameClock* clock, gpointer self) {
    return static_cast<Scroll*>(self)->step(gdk_frame_clock_get_frame_time(clock));
  }
  gboolean step(gint64 now) {
    constexpr gint64 frame = 16'667;
    ++frames;
    if (last) missed += static_cast<int>((now - last + frame / 2) / frame) - 1;
    const double moved = last ? pace * static_cast<double>(now - last) / 1e6 : 0;
    last = now;
    const double end = gtk_adjustment_get_upper(adjustment) - gtk_adjustment_get_page_size(adjustment);
    const double place = gtk_adjustment_get_value(adjustment) + way * moved;
    gtk_adjustment_set_value(adjustment, place);
    if (place >= end) way = -1;
    isOver = way < 0 && place <= 0;
    return !isOver;
  }
};

// Whether something is painted in the middle of the first banner, whose place is the window's upper corner.
bool isPainted(const List& list) {
  auto* widget = GTK_WIDGET(list.window);
  GdkPaintable* paintable = gtk_widget_paintable_new(widget);
  GtkSnapshot* snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(paintable, snapshot, gdk_paintable_get_intrinsic_width(paintable),
                         gdk_paintable_get_intrinsic_height(paintable));
  g_object_unref(paintable);
  GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
  if (!node) return false;
  graphene_rect_t bounds;
  graphene_point_t origin = GRAPHENE_POINT_INIT(44, 4), place;
  if (!gtk_widget_compute_point(gtk_widget_get_first_child(list.box), widget, &origin, &place)) return false;
  graphene_rect_init(&bounds, place.x, place.y, 1, 1);
  GdkTexture* texture =
      gsk_renderer_render_texture(gtk_native_get_renderer(GTK_NATIVE(widget)), node, &bounds);
  gsk_render_node_unref(node);
  guchar pixel[4] = {};
  gdk_texture_download(texture, pixel, 4);
  g_object_unref(texture);
  return pixel[0] > 0x40 && pixel[2] < 0x40;  // the ad's blue (blue, green, red), on a light window
}

double timeToReturn(const List& list) {
  gtk_adjustment_set_value(list.adjustment(), gtk_adjustment_get_upper(list.adjustment()));
  bench::runMainLoopFor(leaves);
  struct Look {
    const List& list;
    double painted = 0;
  } look{list};
  const auto looked = +[](GdkFrameClock*, Look* at) {
    if (!at->painted && isPainted(at->list)) at->painted = bench::wallMilliseconds();
  };
  auto* clock = gtk_widget_get_frame_clock(list.box);
  const double began = bench::wallMilliseconds();
  gtk_adjustment_set_value(list.adjustment(), 0);
  const gulong handler = g_signal_connect(clock, "after-paint", G_CALLBACK(looked), &look);
  while (!look.painted) g_main_context_iteration(nullptr, TRUE);
  g_signal_handler_disconnect(clock, handler);
  return look.painted - began;
}

void scrollThrough(const List& list) {
  Scroll scroll{list.adjustment()};
  gtk_widget_add_tick_callback(list.box, Scroll::next, &scroll, nullptr);
  while (!scroll.isOver) g_main_context_iteration(nullptr, TRUE);
  std::printf("{\"frames\": %d, \"missed\": %d}\n", scroll.frames, scroll.missed);
  for (int i = 0; i < returns; ++i) std::printf("{\"returnMs\": %.3f}\n", timeToReturn(list));
}

void waitForInput() {
  std::printf("{\"pause\": 1}\n");
  std::fflush(stdout);
  for (int read = 0; read != '\n' && read != EOF;) read = std::getchar();
}

}  // namespace

int main(int count, char** words) {
  if (count != 7) {
    std::fprintf(stderr, "usage: %s PORT CA_FILE KEY library|bare memory|scroll COUNT\n", words[0]);
    return 2;
  }
  const bench::Server server{words[1], words[2], words[3]};
  const bool isMemory = std::string(words[5]) == "memory";
  const int banners = std::atoi(words[6]);
  const List list(words[0]);
  std::unique_ptr<Banners> library;
  if (std::string(words[4]) == "library")
    library = std::make_unique<Banners>(server, list, banners);
  else
    addBareViews(bench::Fetch(server).markup("at=banner&fsz=320x50"), list, banners, !isMemory);
  bench::runMainLoopFor(settles);
  if (isMemory)
    waitForInput();
  else
    scrollThrough(list);
  library.reset();
  gtk_window_destroy(list.window);
}
