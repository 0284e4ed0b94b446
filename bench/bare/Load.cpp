// Ads on a real display without the library, written the straightforward way: fetch with libcurl, make a web
// view, load the markup into it, wait until the page says velto://loadFinished. The web session is in memory,
// the view stands in the same window at the same size. Nothing is checked, cleared, injected or reported.
//
// By default each view is a fresh one. With VELTO_BENCH_RELATED set, a new view shares the process of the one
// before, with a fresh process every 32 loads, as the library does it: then both programs put an engine
// through the same, and what memory they differ in is the library's own.
#include <webkit/webkit.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "LoadProgram.h"
#include "Measure.h"
#include "bare/Fetch.h"

namespace {

using velto::bench::threadMilliseconds;
using velto::bench::wallMilliseconds;

constexpr int loadsForProcess = 32;

class BareLoader : public velto::bench::Loader {
 public:
  BareLoader(velto::bench::Server server, GtkWindow* window)
      : fetch_(std::move(server)), overlay_(GTK_OVERLAY(gtk_window_get_child(window))) {}

  ~BareLoader() override {
    if (view_) gtk_overlay_remove_overlay(overlay_, GTK_WIDGET(view_));
    g_clear_object(&session_);
  }

  void load(std::function<void()> loaded) override {
    loaded_ = std::move(loaded);
    const double before = threadMilliseconds();
    const double asked = wallMilliseconds();
    const std::string markup = fetch_.markup("at=banner&fsz=320x50");
    request_ = wallMilliseconds() - asked;
    fetching_ = threadMilliseconds() - before;
    replaceView();
    webkit_web_view_load_html(view_, markup.c_str(), nullptr);
  }

  double uncountedMilliseconds() const override { return fetching_; }
  double requestMilliseconds() const override { return request_; }

 private:
  void replaceView() {
    if (!session_) session_ = webkit_network_session_new_ephemeral();
    WebKitWebView* old = std::exchange(view_, nullptr);
    const bool shares = old && sharesProcesses_ && loads_ % loadsForProcess != 0;
    ++loads_;
    gpointer made = shares ? g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", old, nullptr)
                           : g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session_, nullptr);
    view_ = WEBKIT_WEB_VIEW(made);
    g_signal_connect(view_, "decide-policy", G_CALLBACK(decide), this);
    auto* widget = GTK_WIDGET(view_);
    gtk_widget_set_size_request(widget, 320, 50);
    gtk_widget_set_halign(widget, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(widget, GTK_ALIGN_END);
    if (old) gtk_overlay_remove_overlay(overlay_, GTK_WIDGET(old));
    gtk_overlay_add_overlay(overlay_, widget);
  }

  static gboolean decide(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                         BareLoader* self) noexcept {
    if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
    auto* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const std::string uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    if (uri != "velto://loadFinished") return FALSE;
    webkit_policy_decision_ignore(decision);
    self->loaded_();
    return TRUE;
  }

  velto::bench::Fetch fetch_;
  GtkOverlay* const overlay_;
  const bool sharesProcesses_ = std::getenv("VELTO_BENCH_RELATED") != nullptr;
  std::function<void()> loaded_;
  double fetching_ = 0;
  double request_ = 0;
  int loads_ = 0;
  WebKitNetworkSession* session_ = nullptr;
  WebKitWebView* view_ = nullptr;  // the overlay owns it
};

}  // namespace

int main(int count, char** words) {
  return velto::bench::runLoads(count, words, [](const velto::bench::Server& server, GtkWindow* window) {
    return std::make_unique<BareLoader>(server, window);
  });
}
