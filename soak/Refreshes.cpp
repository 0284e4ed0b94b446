// The two loops, and their comparison.
#include "Refreshes.h"

#include "velto/gtk/VeltoGtk.h"
#include "velto/velto.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "Account.h"
#include "Sandbox.h"
#include "Turns.h"

namespace velto::soak {
namespace {

constexpr int longestLoad = 60'000;  // milliseconds
constexpr int pagesOfProcess = 32;   // as the library has it
constexpr char page[] =
    "<!DOCTYPE html><html><head><style>body { margin: 0; background: #206040; color: white "
    "}</style></head><body>"
    "<a href=\"https://ads.velto.example/landing\">ad</a>"
    "<script>window.onload = function () { location.href = 'velto://loadFinished' }</script></body></html>";

class Refresher {
 public:
  virtual ~Refresher() = default;
  virtual void load() = 0;
  int finished = 0, failed = 0;
};

class Banner : public Refresher {
 public:
  Banner(const Sandbox& sandbox, GtkWindow* window) : delegate_(std::make_shared<Delegate>(*this)) {
    sandbox.install();
    VeltoFramework::addVeltoKey(sandboxKeys[0]);
    delegate_->host = gtk::hostViewController(window);
    banner_ = VeltoBannerViewController::initWithDelegate(delegate_, VeltoBannerSize320x50,
                                                          VeltoBannerPositionBottom);
  }
  ~Banner() override {
    banner_.reset();
    delegate_.reset();
    gtk::uninstall();
  }
  void load() override { banner_->load(); }

 private:
  struct Delegate : VeltoBannerViewControllerDelegate {
    explicit Delegate(Refresher& refresher) : owner(refresher) {}
    std::shared_ptr<UIViewController> presentViewController() override { return host; }
    void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override {
      ++owner.finished;
    }
    void veltoBannerViewControllerDidFail(VeltoBannerViewControllerPrivate&, const VeltoErrorAd&) override {
      ++owner.failed;
    }
    Refresher& owner;
    std::shared_ptr<UIViewController> host;
  };
  std::shared_ptr<Delegate> delegate_;
  std::shared_ptr<VeltoBannerViewController> banner_;
};

// Web views and nothing else: nothing is asked for, checked, cleared or told.
class Bare : public Refresher {
 public:
  explicit Bare(GtkWindow* window)
      : overlay_(GTK_OVERLAY(gtk_overlay_new())), session_(webkit_network_session_new_ephemeral()) {
    gtk_window_set_child(window, GTK_WIDGET(overlay_));
  }
  ~Bare() override { g_object_unref(session_); }
  void load() override {
    auto* old = view_;
    const bool shares = old && loads_++ % pagesOfProcess != 0;
    gpointer made = shares ? g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", old, nullptr)
                           : g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session_, nullptr);
    view_ = WEBKIT_WEB_VIEW(made);
    g_signal_connect(view_, "decide-policy", G_CALLBACK(decide), this);
    gtk_widget_set_size_request(GTK_WIDGET(view_), 320, 50);
    gtk_widget_set_halign(GTK_WIDGET(view_), GTK_ALIGN_CENTER);
    gtk_widget_set_valign(GTK_WIDGET(view_), GTK_ALIGN_END);
    if (old) gtk_overlay_remove_overlay(overlay_, GTK_WIDGET(old));
    gtk_overlay_add_overlay(overlay_, GTK_WIDGET(view_));
    webkit_web_view_load_html(view_, page, nullptr);
  }

 private:
  static gboolean decide(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                         Bare* self) noexcept {
    if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
    auto* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const std::string uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    if (uri != "velto://loadFinished") return FALSE;
    webkit_policy_decision_ignore(decision);
    ++self->finished;
    return TRUE;
  }

  GtkOverlay* const overlay_;
  WebKitNetworkSession* const session_;
  int loads_ = 0;
  WebKitWebView* view_ = nullptr;  // the overlay owns it
};

void tell(Turns& turns, int at, const std::string& store) {
  turns.runFor(1000);
  const auto held = heldNow(store);
  std::printf("held %d %lld %lld %lld %lld %lld\n", at, static_cast<long long>(held.heap),
              static_cast<long long>(held.own), static_cast<long long>(held.descriptors),
              static_cast<long long>(held.threads), static_cast<long long>(held.processes));
  std::fflush(stdout);
}

struct Told {
  Held warm, end;
  int code = 0;
};

// Repeats what the process says, and keeps the first and the last figures.
Told listen(test::Process& process, const char* name) {
  Told told;
  bool isFirst = true;
  while (const auto line = process.line()) {
    std::istringstream words(*line);
    std::string what;
    int at = 0;
    Held held;
    if (!(words >> what >> at >> held.heap >> held.own >> held.descriptors >> held.threads >>
          held.processes) ||
        what != "held") {
      std::printf("%s\n", line->c_str());
      continue;
    }
    std::printf(
        "%s, %d refreshes: heap %lld KiB, own memory %lld KiB, %lld descriptors, %lld threads, %lld "
        "processes\n",
        name, at, static_cast<long long>(held.heap), static_cast<long long>(held.own),
        static_cast<long long>(held.descriptors), static_cast<long long>(held.threads),
        static_cast<long long>(held.processes));
    std::fflush(stdout);
    if (std::exchange(isFirst, false)) told.warm = held;
    told.end = held;
  }
  told.code = process.exitCode();
  return told;
}

}  // namespace

int refresh(const std::string& program, bool withLibrary, int times, Leak leak) {
  if (!gtk_init_check()) throw std::runtime_error("there is no display");
  const Sandbox sandbox(program);
  auto* window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_default_size(window, 400, 300);
  gtk_window_present(window);
  Turns turns;
  std::unique_ptr<Refresher> refresher;
  if (withLibrary)
    refresher = std::make_unique<Banner>(sandbox, window);
  else
    refresher = std::make_unique<Bare>(window);
  const int warm = std::min(1000, std::max(1, times / 5));
  const int tenth = std::max(1, times / 10);
  for (int at = 1; at <= warm + times; ++at) {
    const int ended = refresher->finished + refresher->failed;
    turns.call("refresh", [&] { refresher->load(); });
    if (!turns.runUntil([&] { return refresher->finished + refresher->failed > ended; }, longestLoad)) {
      std::printf("refresh %d does not end\n", at);
      return 1;
    }
    if (leak == Leak::All && withLibrary) g_strnfill(65536, 'x');
    if (at >= warm && (at - warm) % tenth == 0) tell(turns, at - warm, sandbox.store());
  }
  std::printf(
      "%d refreshes failed; the longest turn of the main loop took %.1f ms of processor time, "
      "one waited %.1f ms\n",
      refresher->failed, turns.mostUsed().used, turns.longestWait().waited);
  const bool isGood = refresher->failed == 0;
  refresher.reset();
  gtk_window_destroy(window);
  return isGood ? 0 : 1;
}

int compareRefreshes(const std::string& program, const std::string& sandbox, int times, Leak leak) {
  const auto words = [&](const char* with) {
    std::vector<std::string> all{program,  "--sandbox", sandbox, "--refreshes", std::to_string(times),
                                 "--with", with};
    if (leak != Leak::None) all.insert(all.end(), {"--fault", "leak"});
    return all;
  };
  test::Process bareProcess(words("bare")), libraryProcess(words("library"));
  const auto library = listen(libraryProcess, "library");
  const auto bare = listen(bareProcess, "bare");
  if (library.code != 0 || bare.code != 0) {
    std::printf("velto-soak: a refresh failed\n");
    return 1;
  }
  const struct {
    const char* name;
    int64_t Held::*member;
    int64_t limit;
  } rows[] = {{"heap, KiB", &Held::heap, 1024},
              {"own memory, KiB", &Held::own, 1024},
              {"descriptors", &Held::descriptors, 4},
              {"threads", &Held::threads, 4},
              {"processes", &Held::processes, 1}};
  std::printf("%-20s %10s %10s %12s %10s\n", "growth", "library", "bare", "difference", "limit");
  int over = 0;
  for (const auto& [name, member, limit] : rows) {
    const int64_t grown = library.end.*member - library.warm.*member,
                  engine = bare.end.*member - bare.warm.*member;
    const int64_t difference = grown - std::max<int64_t>(0, engine);
    std::printf("%-20s %10lld %10lld %12lld %10lld%s\n", name, static_cast<long long>(grown),
                static_cast<long long>(engine), static_cast<long long>(difference),
                static_cast<long long>(limit), difference > limit ? "  OVER" : "");
    over += difference > limit;
  }
  std::printf(over ? "velto-soak: the library grows over %d refreshes\n"
                   : "Over %d refreshes the library does not grow.\n",
              times);
  return over ? 1 : 0;
}

}  // namespace velto::soak
