// What an ad that is shown costs while nothing happens: a window with one ad in a list, left alone. By hand the same page
// stands in a web view at the same place.
//
//   usage: velto-bench-idle library|bare static|measured|rich|animated IN_VIEW|OUT_OF_VIEW|HIDDEN
//
// Once all is at rest it prints {"pause": 1}, and goes on until there is a line of input; run.py counts meanwhile. Of an ad
// that is out of view the list is scrolled away, of a hidden one the window is not on the screen any more.
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"

#include <gio/gio.h>
#include <webkit/webkit.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>

#include "LibraryPage.h"

namespace {

using namespace velto;

constexpr guint settles = 5000;  // milliseconds
// The engine tidies up behind itself, threads that had work end, and a process that was started for a page nobody saw yet has
// been asked, 20 and 60 seconds later, whether it still answers: after that ever more rarely.
constexpr guint rests = 60000;

const std::map<std::string, std::string> scripts = {
    {"static", ""},
    {"measured",
     "if (window.omid3p) { omid3p.registerSessionObserver(() => {}, 'bench.example');"
     " omid3p.addEventListener('geometryChange', () => {}); }"},
    {"rich",
     "if (window.mraid) for (const event of ['stateChange', 'exposureChange', 'sizeChange'])"
     " mraid.addEventListener(event, () => {});"},
    {"animated",
     "let turn = 0; const box = document.querySelector('b');"
     "requestAnimationFrame(function next() { box.style.transform = `rotate(${++turn}deg)`;"
     " requestAnimationFrame(next); }); setInterval(() => ++turn, 50);"},
};

std::string pageOf(const std::string& kind, bool withLibrary) {
  const bool isRich = kind == "rich" && withLibrary;
  return std::string("<!DOCTYPE html><html><head>") + (isRich ? "<script src='mraid.js'></script>" : "") +
         "</head><body style='margin:0;background:#2f6f8f;color:#fff'><b style='display:inline-block'>An "
         "ad</b>"
         "<script>" +
         scripts.at(kind) + (withLibrary && !isRich ? "location.href = 'velto://loadFinished'" : "") +
         "</script></body></html>";
}

struct LibraryAd {
  std::shared_ptr<bench::HostOf> host = std::make_shared<bench::HostOf>();
  std::shared_ptr<VeltoBannerViewController> banner;

  LibraryAd(GtkBox* list, const std::string& kind) {
    gtk::install({.applicationIdentifier = "org.example.bench"});
    auto* slot = gtk::adSlot();
    gtk_box_append(list, slot);
    host->controller = gtk::hostViewController(slot);
    // What is brought up for a first load() is not asked for here, and would stand beside the ad.
    Platform::current().views().prepareWebContent(nullptr, WebContentUse::Later);
    banner =
        VeltoBannerViewController::initWithDelegate(host, VeltoBannerSize320x50, VeltoBannerPositionBottom);
    const auto ad = VeltoAd::adWithHTML(pageOf(kind, true), std::nullopt, nullptr);
    ad->size = {320, 50};
    banner->vc()->fetchBannerSuccess(ad);
  }
  ~LibraryAd() {
    banner.reset();
    host.reset();
    gtk::uninstall();
  }
};

void runUntilInput() {
  GIOChannel* input = g_io_channel_unix_new(0);
  bool came = false;
  g_io_add_watch(
      input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP),
      [](GIOChannel*, GIOCondition, gpointer flag) -> gboolean {
        return !(*static_cast<bool*>(flag) = true);
      },
      &came);
  while (!came) g_main_context_iteration(nullptr, TRUE);
  g_io_channel_unref(input);
}

GtkWidget* filler() {
  GtkWidget* label = gtk_label_new("A list of other things");
  gtk_widget_set_size_request(label, 100, 2000);
  return label;
}

}  // namespace

int main(int count, char** words) {
  const std::string kind = count == 4 ? words[2] : "";
  if (!scripts.contains(kind)) {
    std::fprintf(stderr, "usage: %s library|bare static|measured|rich|animated IN_VIEW|OUT_OF_VIEW|HIDDEN\n",
                 words[0]);
    return 2;
  }
  if (!gtk_init_check()) {
    std::fprintf(stderr, "%s: no display\n", words[0]);
    return 1;
  }
  auto* window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_default_size(window, 400, 300);
  auto* scrolled = gtk_scrolled_window_new();
  auto* list = GTK_BOX(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0));
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), GTK_WIDGET(list));
  gtk_window_set_child(window, scrolled);
  std::unique_ptr<LibraryAd> ad;
  if (std::string(words[1]) == "library") {
    ad = std::make_unique<LibraryAd>(list, kind);
  } else {
    GtkWidget* view = webkit_web_view_new();
    gtk_widget_set_size_request(view, 320, 50);
    gtk_box_append(list, view);
    webkit_web_view_load_html(WEBKIT_WEB_VIEW(view), pageOf(kind, false).c_str(), nullptr);
  }
  gtk_box_append(list, filler());
  gtk_window_present(window);
  bench::wait(settles);
  const std::string place = words[3];
  if (place == "OUT_OF_VIEW")
    gtk_adjustment_set_value(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled)), 1000);
  if (place == "HIDDEN") gtk_widget_set_visible(GTK_WIDGET(window), FALSE);
  bench::wait(rests);
  std::printf("{\"pause\": 1}\n");
  std::fflush(stdout);
  runUntilInput();
  ad.reset();
  gtk_window_destroy(window);
}
