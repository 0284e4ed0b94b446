// The steps, and how often each comes.
#include "velto/platform/ui/WKWebView.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include <iterator>

#include "Stage.h"

namespace velto::soak {

void Stage::step() {
  const struct {
    const char* name;
    int often;
    std::function<void()> what;
  } all[] = {{"load", 300, [this] { load(); }},
             {"screen", 120, [this] { screen(); }},
             {"let go", 60, [this] { letGo(); }},
             {"refresh", 60, [this] { changeRefresh(); }},
             {"ask page", 80, [this] { askPage(); }},
             {"scroll", 80, [this] { scroll(); }},
             {"resize", 60, [this] { resize(); }},
             {"move slot", 40, [this] { moveSlot(); }},
             {"hide or show", 30, [this] { hideOrShow(); }},
             {"open or close", 20, [this] { openOrClose(); }},
             {"let late ones go", 30, [this] { late_.clear(); }},
             {"click", 40, [this] { around_.click(); }},
             {"look", 20, [this] { around_.changeLook(); }},
             {"kill page", 20, [this] { around_.killPage(); }},
             {"hang page", 8, [this] { around_.hangPage(); }},
             {"kill network", 5, [this] { around_.killNetwork(); }},
             {"server", 8, [this] { around_.stopServer(); }}};
  int sum = 0;
  for (const auto& action : all) sum += action.often;
  int at = drawn(dice_, sum);
  for (const auto& action : all)
    if ((at -= action.often) < 0) {
      // What is done around the library is no turn of its.
      const bool isOurs = &action < std::end(all) - 6;
      if (isOurs)
        turns_.call(action.name, action.what);
      else
        action.what();
      break;
    }
  ++counts_.steps;
  around_.step();
  turns_.runFor(drawn(dice_, 4) == 0 ? 0 : drawn(dice_, 60));
}

// Half of the ads come.
void Stage::load() {
  const auto& place = anyPlace();
  if (!place.ears) return;
  constexpr int keys = static_cast<int>(std::size(sandboxKeys)),
                endpoints = static_cast<int>(std::size(sandboxEndpoints));
  VeltoFramework::addVeltoKey(drawn(dice_, 2) == 0 ? "good" : sandboxKeys[drawn(dice_, keys)]);
  if (drawn(dice_, 20) == 0) VeltoFramework::setEndpoint(sandboxEndpoints[drawn(dice_, endpoints)]);
  ++counts_.loads;
  place.load();
}

void Stage::letGo() {
  const int number = drawn(dice_, places);
  if (drawn(dice_, 3) == 0 && places_[static_cast<size_t>(number)].banner)
    places_[static_cast<size_t>(number)].banner->removeBanner();
  else
    make(number);
}

void Stage::changeRefresh() {
  const auto& place = anyPlace();
  if (!place.banner) return;
  place.banner->setEnableAutoRefresh(drawn(dice_, 2) == 0);
  place.banner->setRefreshTimeSeconds(1 + drawn(dice_, 5));
  place.banner->setRefreshPaused(drawn(dice_, 4) == 0);
  place.banner->setHeavyAdPolicy(drawn(dice_, 2) == 0 ? VeltoHeavyAdPolicyReplace : VeltoHeavyAdPolicyReport);
}

void Stage::screen() {
  const auto& interstitial = places_[static_cast<size_t>(places - 1 - drawn(dice_, 2))].interstitial;
  if (!interstitial) return;
  if (interstitial->isReady())
    interstitial->show();
  else if (interstitial->state() == VeltoInterstitialStatePresented)
    interstitial->vc()->_tapCloseButton();
  else
    interstitial->load();
}

void Stage::resize() {
  const auto& window = anyWindow();
  if (window.window)
    gtk_window_set_default_size(window.window, 200 + drawn(dice_, 700), 100 + drawn(dice_, 700));
}

void Stage::hideOrShow() {
  const auto& window = anyWindow();
  if (!window.window) return;
  gtk_widget_set_visible(GTK_WIDGET(window.window), !gtk_widget_get_visible(GTK_WIDGET(window.window)));
}

void Stage::openOrClose() {
  const int number = drawn(dice_, windows);
  windows_[static_cast<size_t>(number)].window ? close(number) : open(number);
}

// Into another place of the list, another window, or none.
void Stage::moveSlot() {
  const int number = drawn(dice_, slots);
  auto* slot = slots_[static_cast<size_t>(number)].get();
  if (auto* parent = gtk_widget_get_parent(slot); parent && GTK_IS_BOX(parent))
    gtk_box_remove(GTK_BOX(parent), slot);
  const int window = drawn(dice_, windows);
  if (drawn(dice_, 4) != 0 && windows_[static_cast<size_t>(window)].window) putSlot(number, window);
}

void Stage::scroll() {
  const auto& window = anyWindow();
  if (!window.window) return;
  auto* adjustment = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(window.scrolled));
  gtk_adjustment_set_value(adjustment, drawn(dice_, 3) == 0 ? 1200 : drawn(dice_, 300));
}

// What rich media asks for, and what pages do to themselves.
void Stage::askPage() {
  static constexpr const char* commands[] = {
      "mraid.expand()",
      "mraid.expand('https://ads.velto.example/second')",
      "mraid.setResizeProperties({width: 400, height: 120, offsetX: 0, offsetY: 0}); mraid.resize()",
      "mraid.close()",
      "mraid.setOrientationProperties({forceOrientation: 'landscape'})",
      "mraid.open('https://long-coast.example/')",
      "mraid.playVideo('https://ads.velto.example/none.webm')",
      "location.href = 'velto://noFillAd'",
      "location.href = 'velto://loadFinished'",
      "document.body.innerHTML = ''",
      "window.close()",
      "location.reload()"};
  const auto& place = anyPlace();
  if (!place.ears) return;
  const auto page = place.banner ? place.banner->vc()->webView() : place.interstitial->vc()->webView();
  if (page)
    page->evaluateJavaScript(commands[drawn(dice_, static_cast<int>(std::size(commands)))],
                             [](const auto&, const auto&) {});
}

}  // namespace velto::soak
