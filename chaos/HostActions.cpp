// What a host application and the person before it do.
#include "velto/timeline/InspectedPlacement.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include <array>
#include <csignal>

#include "World.h"

namespace velto::chaos {
namespace {

constexpr int all = World::placements;
constexpr int tenth = 39;  // points of a window that is 390 wide

void withBanner(World& world, int number, const std::function<void(VeltoBannerViewController&)>& what) {
  if (const auto banner = world.placement(number).banner) what(*banner);
}
void withInterstitial(World& world, int number,
                      const std::function<void(VeltoInterstitialViewController&)>& what) {
  if (const auto interstitial = world.placement(World::banners + number).interstitial) what(*interstitial);
}

void loadWithSettings(World& world, const Numbers& n) {
  VeltoSettings settings;
  settings.age = n[1];
  settings.gender = n[2];  // beyond the list's end: the request is not built
  auto& place = world.placement(n[0]);
  if (place.banner) place.banner->load(settings);
  if (place.interstitial) place.interstitial->load(settings);
}

void inspect(World&, const Numbers& n) {
  const auto placements = TimelineHub::shared()->placements();
  if (placements.empty()) return;
  const auto placement = placements[static_cast<size_t>(n[0]) % placements.size()];
  if (n[1] == 0) return placement->reload();
  const auto reasons = InspectedPlacement::simulatedReasons();
  placement->simulate(reasons[static_cast<size_t>(n[1]) % reasons.size()]);
}

void closeWindow(World& world, const Numbers& n) {
  if (world.promises.has(Fault::Crash) && world.window(n[0])) std::raise(SIGSEGV);
  world.window(n[0]) ? world.window(n[0]).reset() : world.openWindow(n[0]);
}

void moveSlot(World& world, const Numbers& n) {
  world.slot->moveTo(n[0] < World::windows ? world.window(n[0]).get() : nullptr);
}

void tapPage(World& world, const Numbers& n) {
  const auto* page = world.page(n[0]);
  if (!page) return;
  for (int number = 0; number < World::windows; ++number) {
    auto& window = world.window(number);
    const auto view = page->webView().shared_from_this();
    if (!window || !view->isDescendantOfView(window->view())) continue;
    const CGRect bounds = view->bounds();
    return world.touch(number, window->view().convertPointFromView({bounds.midX(), bounds.midY()}, *view));
  }
}

}  // namespace

std::vector<Action> hostActions() {
  return {
      {"begin",
       12,
       {all, 3, 16},
       "an ad is made: which, its host (two windows, a slot), size and place",
       [](World& world, const Numbers& n) { world.begin(n[0], n[1], n[2]); }},
      {"load",
       60,
       {all},
       "the host loads, and makes the ad where there is none",
       [](World& world, const Numbers& n) {
         if (!world.placement(n[0]).exists()) world.begin(n[0], n[0], n[0]);
         world.placement(n[0]).load();
       }},
      {"load-with", 4, {all, 3, 5}, "the same with settings, good and bad: age, gender", loadWithSettings},
      {"let-go",
       8,
       {all},
       "the host lets go of an ad",
       [](World& world, const Numbers& n) { world.letGo(world.placement(n[0])); }},
      {"remove",
       6,
       {World::banners},
       "a banner is taken off the screen",
       [](World& world, const Numbers& n) {
         withBanner(world, n[0], [](auto& banner) { banner.removeBanner(); });
       }},
      {"refresh",
       8,
       {World::banners, 4},
       "a banner refreshes every 0 (never), 1, 2 or 3 seconds",
       [](World& world, const Numbers& n) {
         withBanner(world, n[0], [&](auto& banner) {
           banner.setEnableAutoRefresh(n[1] > 0);
           banner.setRefreshTimeSeconds(n[1]);
         });
       }},
      {"pause",
       3,
       {World::banners, 2},
       "refreshes are held back, or go on",
       [](World& world, const Numbers& n) {
         withBanner(world, n[0], [&](auto& banner) { banner.setRefreshPaused(n[1] == 1); });
       }},
      {"resize",
       3,
       {World::banners, 4},
       "another size is wanted",
       [](World& world, const Numbers& n) {
         withBanner(world, n[0], [&](auto& banner) { banner.setSize(static_cast<VeltoBannerSize>(n[1])); });
       }},
      {"animate",
       3,
       {all, 6},
       "how an ad comes in",
       [](World& world, const Numbers& n) {
         const auto animation = static_cast<VeltoAnimation>(n[1]);
         if (world.placement(n[0]).banner) world.placement(n[0]).banner->setAnimation(animation);
         if (world.placement(n[0]).interstitial) world.placement(n[0]).interstitial->setAnimation(animation);
       }},
      {"show",
       24,
       {World::interstitials},
       "an interstitial is shown",
       [](World& world, const Numbers& n) { withInterstitial(world, n[0], [](auto& ad) { ad.show(); }); }},
      {"show-over",
       6,
       {World::interstitials, World::windows},
       "the same over another window",
       [](World& world, const Numbers& n) {
         const auto& window = world.window(n[1]);
         withInterstitial(world, n[0], [&](auto& ad) { ad.show(window ? window->controller() : nullptr); });
       }},
      {"react",
       20,
       {all, reactions},
       "what the host does inside the ad's next call: see Reaction",
       [](World& world, const Numbers& n) {
         auto& waiting = world.placement(n[0]).reactions;
         if (waiting.size() < 3) waiting.push_back(static_cast<Reaction>(n[1]));
       }},
      {"inspect", 4, {all, 64}, "the inspector loads anew (0) or plays a failure", inspect},
      {"register",
       2,
       {},
       "the key is registered again",
       [](World& world, const Numbers&) { world.registerKey(); }},
      {"consent",
       6,
       {2, 2, 2},
       "the person decides: accepted, with a consent string, with a US privacy string",
       [](World& world, const Numbers& n) {
         const std::string gdpr = n[1] == 1 ? "CO-consent" : "", us = n[2] == 1 ? "1YNN" : "";
         const bool wasAccepted = std::exchange(world.consent, {n[0] == 1, gdpr, us}).accepted;
         if (world.promises.has(Fault::StaleConsent) && wasAccepted) return;
         VeltoFramework::acceptPersonalInfoContent(n[0] == 1);
         VeltoFramework::setGDPRConsent(gdpr);
         VeltoFramework::setUsPrivacy(us);
       }},
      {"endpoint",
       1,
       {3},
       "the host names an endpoint, a bad one, none",
       [](World&, const Numbers& n) {
         const std::array endpoints{"acme", "a/b", ""};
         VeltoFramework::setEndpoint(endpoints.at(static_cast<size_t>(n[0])));
       }},
      {"tap",
       20,
       {World::windows, 10, 21},
       "a finger on a point of a window",
       [](World& world, const Numbers& n) {
         world.touch(n[0], {tenth * (n[1] + 0.5), tenth * (n[2] + 0.5)});
       }},
      {"tap-page", 20, {all}, "a finger on the middle of a page", tapPage},
      {"key",
       6,
       {World::windows, 2},
       "Escape, or another key",
       [](World& world, const Numbers& n) {
         if (!world.window(n[0])) return;
         n[1] == 0 ? world.window(n[0])->pressEscape() : world.window(n[0])->pressKey(UIKey::Space);
       }},
      {"see-window",
       4,
       {World::windows, 4},
       "a window is hidden (0) or shown",
       [](World& world, const Numbers& n) {
         if (!world.window(n[0])) return;
         n[1] == 0 ? world.window(n[0])->hide() : world.window(n[0])->show();
       }},
      {"turn",
       4,
       {World::windows, 2},
       "a window is turned",
       [](World& world, const Numbers& n) {
         if (world.window(n[0])) world.window(n[0])->resize(n[1] == 0 ? CGSize{390, 844} : CGSize{844, 390});
       }},
      {"close-window", 2, {World::windows}, "a window goes for good, or a new one comes", closeWindow},
      {"move-slot", 3, {World::windows + 1}, "the slot goes to another window, or out of all", moveSlot},
  };
}

}  // namespace velto::chaos
