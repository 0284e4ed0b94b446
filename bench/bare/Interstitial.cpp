// Interstitials on a real display without the library, written the straightforward way: fetched with libcurl
// ahead of time; when it is to be shown, a web view over the whole window, into which the markup is loaded.
// It is shown as soon as the view is in the window.
#include <webkit/webkit.h>

#include <string>
#include <utility>

#include "InterstitialProgram.h"
#include "bare/Fetch.h"

namespace {

class BareInterstitial : public velto::bench::Interstitial {
 public:
  BareInterstitial(velto::bench::Server server, GtkWindow* window)
      : fetch_(std::move(server)),
        overlay_(GTK_OVERLAY(gtk_window_get_child(window))),
        session_(webkit_network_session_new_ephemeral()) {}
  ~BareInterstitial() override { g_object_unref(session_); }

  void load(std::function<void()> done) override {
    markup_ = fetch_.markup("at=interstitial");
    done();
  }
  void show(std::function<void()> done) override {
    view_ = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session_, nullptr));
    g_signal_connect(view_, "decide-policy", G_CALLBACK(decide), nullptr);
    gtk_overlay_add_overlay(overlay_, GTK_WIDGET(view_));
    webkit_web_view_load_html(view_, markup_.c_str(), nullptr);
    done();
  }
  void close(std::function<void()> done) override {
    gtk_overlay_remove_overlay(overlay_, GTK_WIDGET(std::exchange(view_, nullptr)));
    done();
  }

 private:
  static gboolean decide(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                         gpointer) noexcept {
    if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
    auto* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const std::string uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    if (uri != "velto://loadFinished") return FALSE;
    webkit_policy_decision_ignore(decision);
    return TRUE;
  }

  velto::bench::Fetch fetch_;
  GtkOverlay* const overlay_;
  WebKitNetworkSession* const session_;
  std::string markup_;
  WebKitWebView* view_ = nullptr;  // the overlay owns it
};

}  // namespace

int main(int count, char** words) {
  return velto::bench::runInterstitials(count, words,
                                        [](const velto::bench::Server& server, GtkWindow* window) {
                                          return std::make_unique<BareInterstitial>(server, window);
                                        });
}
