// Random walks: host calls, server answers, page signals, touches and time in any order, also from inside
// callbacks. What must hold whatever happens is checked after every step; every walk ends by letting go of
// everything.
#include "velto/ads/VeltoAdMediationAdapterProtocol.h"
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/timeline/TimelineHub.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "UITest.h"

namespace velto {
namespace {

using headless::Answer;

// A delegate that knows where its ad stands.
template <class Recording>
struct Strict : Recording {
  bool alive = true;
  bool ready = false;
  bool shown = false;
  bool closing = false;
};
using StrictBannerDelegate = Strict<test::RecordingDelegate>;
using StrictInterstitialDelegate = Strict<test::RecordingInterstitialDelegate>;

void followLast(StrictBannerDelegate&) {}
// Checks the order of what one interstitial tells.
void followLast(StrictInterstitialDelegate& told) {
  const auto& what = told.heard.back();
  const auto* presenting = told.lastController->presentingViewController();
  if (what == "finish") {
    EXPECT_FALSE(told.shown || told.closing) << "an ad became ready while another was on the screen";
    told.ready = true;
  } else if (what == "appear") {
    EXPECT_TRUE(told.ready && !told.shown && !told.closing && presenting);
    told.shown = true;
  } else if (what == "close") {
    EXPECT_FALSE(told.closing) << "closed twice";
    told.closing = true;
    told.ready = false;
  } else if (what == "dismissed") {
    EXPECT_TRUE(told.closing && !presenting) << "dismissed without a close";
    told.closing = told.shown = false;
  }
}

// Adapters of a network that answers with ads of its own, whatever becomes of them.
struct WalkNetwork : VeltoAdMediationAdapterProtocol {
  void adapt(const std::shared_ptr<VeltoMediationItemResponse>&, std::optional<int64_t> bannerSize,
             const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t adType,
             VeltoAdCompletion completion) override {
    const auto adapter = test::FakeAdapter::make(adType);
    adapters.push_back(adapter);
    completion(VeltoAd::adWithMediation(adapter, bannerSize, headers), std::nullopt);
  }
  std::vector<std::weak_ptr<test::FakeAdapter>> adapters;
};

// What timelines promise: one end for each load, entries in the order of their times, nothing after the end.
struct StrictSink : TimelineSink {
  void added(const std::string&, uint64_t load, const VeltoTimelineEntry& entry) override {
    EXPECT_EQ(entry.kind == VeltoTimelineKind::Asked, open.insert(load).second)
        << "begun twice, or ended before";
  }
  void ended(const VeltoAdTimeline& told) override {
    EXPECT_EQ(open.erase(told.load), 1U) << "ended twice";
    ++ends[*told.end];
    EXPECT_TRUE(std::is_sorted(told.entries.begin(), told.entries.end(),
                               [](const auto& one, const auto& next) { return one.seconds < next.seconds; }));
    EXPECT_LE(told.entries.back().seconds, told.endSeconds);
  }
  std::set<uint64_t> open;
  std::map<VeltoAdEndReason, int> ends;
};

class StateWalk : public test::UITest, public ::testing::WithParamInterface<unsigned> {
 protected:
  template <class Ad, class Delegate>
  struct Slot {
    std::shared_ptr<Ad> ad;
    std::shared_ptr<Delegate> delegate;
  };
  using Interstitial = Slot<VeltoInterstitialViewController, StrictInterstitialDelegate>;
  using Banner = Slot<VeltoBannerViewController, StrictBannerDelegate>;

  static constexpr char adapterName[] = "VeltoAdMediationAdapterAdMob";
  StateWalk() : random(GetParam()) {
    VeltoAdMediationAdapterRegistry::registerAdapter(adapterName, network);
    TimelineHub::shared()->add(timelines);
  }
  ~StateWalk() override { VeltoAdMediationAdapterRegistry::registerAdapter(adapterName, nullptr); }

  size_t below(size_t limit) { return random() % limit; }

  // From inside a callback: now and then the host does something at once.
  template <class Slot>
  void inCallback(Slot& slot) {
    const size_t choice = below(24);
    if (choice == 0) letGo(slot);
    if (choice == 1 && slot.ad) slot.ad->load();
    if constexpr (std::is_same_v<Slot, Interstitial>) {
      if (choice < 6 && slot.ad) slot.ad->show();
    }
  }
  template <class Slot>
  void letGo(Slot& slot) {
    if (!slot.ad) return;
    const auto ad = std::move(slot.ad);  // it ends at the end of this call, inside it
    slot.ad.reset();
    slot.delegate->alive = false;
  }
  std::shared_ptr<VeltoInterstitialViewController> made(
      const std::shared_ptr<StrictInterstitialDelegate>& told) {
    auto ad = VeltoInterstitialViewController::initWithDelegate(told);
    ad->setAutoShowWhenReady(below(3) == 0);
    return ad;
  }
  std::shared_ptr<VeltoBannerViewController> made(const std::shared_ptr<StrictBannerDelegate>& told) {
    auto ad = VeltoBannerViewController::initWithDelegate(told, VeltoBannerSize320x50,
                                                          static_cast<VeltoBannerPosition>(below(2)));
    ad->setEnableAutoRefresh(below(2) == 0);
    return ad;
  }
  template <class Slot>
  void begin(Slot& slot) {
    slot.delegate = std::make_shared<typename decltype(slot.delegate)::element_type>();
    slot.delegate->host = window->controller();
    slot.ad = made(slot.delegate);
    std::erase_if(working, [](const auto& controller) { return controller.expired(); });
    working.push_back(slot.ad->vc());
    slot.ad->setAnimation(static_cast<VeltoAnimation>(below(6)));
    slot.delegate->onCall = [this, &slot, told = slot.delegate.get()] {
      EXPECT_TRUE(told->alive) << "a call after the end";
      followLast(*told);
      inCallback(slot);
    };
  }
  template <class Slot>
  void hostStep(Slot& slot) {
    if (!slot.ad) return begin(slot);
    const size_t choice = below(8);
    if (choice == 0) return letGo(slot);
    if constexpr (std::is_same_v<Slot, Interstitial>) {
      if (choice < 4) return slot.ad->show();
    } else {
      if (choice == 1) return slot.ad->removeBanner();
    }
    slot.ad->load();
  }

  Answer randomAnswer() {
    Answer answer = status(204);
    const size_t choice = below(8);
    if (choice < 5)
      answer = markup(test::readyPage, static_cast<int>(below(2) * 320), static_cast<int>(below(2) * 50));
    if (choice < 3) answer.body = test::richPage;
    if (choice == 0) answer = with(answer, {{"x-fst", std::to_string(below(3000))}});
    if (choice == 6) answer = Answer::offline();
    if (choice == 7)
      answer = with(mediation(below(2) == 0 ? R"({"mediation":[{"cn":"VeltoAdmobBannerAdapter"}]})"
                                            : R"({"mediation":[{"cn":"VeltoAdmobInterstitialAdapter"}]})"),
                    {{"x-fst", std::to_string(below(3000))}});
    answer.delay = std::chrono::milliseconds(below(2) * below(4000));
    return answer;
  }
  void pageStep() {
    if (platform->webViews().empty()) return;
    auto& page = *platform->webViews()[below(platform->webViews().size())];
    const size_t choice = below(6);
    if (choice == 0) return page.finish();
    if (choice == 1) return page.fail(NSError{"WebKitNetworkError", 399, "crashed"});
    if (choice > 2)
      page.navigate(commands[below(commands.size())]);
    else
      page.navigate(below(4) == 0 ? "velto://failLoad" : "velto://loadFinished");
  }
  // A network announces, fails, presents its screen or takes it away, reports what people did: at any time.
  void adapterStep() {
    std::erase_if(network->adapters, [](const auto& adapter) { return adapter.expired(); });
    if (network->adapters.empty()) return;
    const auto adapter = network->adapters[below(network->adapters.size())].lock();
    const auto told = adapter->told();
    const auto root = adapter->root.lock();
    const bool isScreen = adapter->adType() == VeltoAdTypeInterstitial;
    const size_t choice = below(6);
    if (choice == 0)
      post(isScreen ? constNotificationAdMobAdapterGADInterstitialReady
                    : constNotificationAdMobAdapterGADBannerReady,
           adapter);
    if (choice == 1) post(constNotificationAdMobAdapterGADInterstitialError, adapter);
    if (choice == 2 && isScreen && root)
      root->presentViewController(std::make_shared<UIViewController>(), false, nullptr);
    if (choice == 3 && root && root->presentedViewController())
      root->presentedViewController()->dismissViewControllerAnimated(false, nullptr);
    if (choice > 3 && told) below(2) == 0 ? told->mediationBannerDidPress() : told->mediationBannerDidClose();
  }
  void personStep() {
    const size_t choice = below(5);
    if (choice == 0) window->pressEscape();
    if (choice == 1) below(4) == 0 ? window->hide() : window->show();
    if (choice == 2) window->resize(below(2) == 0 ? CGSize{390, 844} : CGSize{844, 390});
    if (choice > 2) window->tap({static_cast<double>(below(390)), static_cast<double>(below(844))});
  }
  void step() {
    platform->urlSession().enqueue("/sdk/", randomAnswer());
    const size_t choice = below(9);
    if (choice < 2) return hostStep(interstitials[below(interstitials.size())]);
    if (choice == 2) return hostStep(banners[below(banners.size())]);
    if (choice < 5) return pageStep();
    if (choice == 5) return personStep();
    if (choice == 8) return adapterStep();
    platform->advance(std::chrono::milliseconds(below(3) == 0 ? 1500 : below(200)));
  }

  bool isOnScreen(const Interstitial& slot) const {
    return slot.ad && slot.delegate->shown && !slot.delegate->closing;
  }
  void check() {
    // A close button that was taken away may come back a turn later.
    const auto lacksButton = [this](const Interstitial& slot) {
      return isOnScreen(slot) && closeButtons(*slot.ad->vc()->view()) == 0;
    };
    if (std::any_of(interstitials.begin(), interstitials.end(), lacksButton)) platform->runUntilIdle();

    size_t presented = 0;
    for (const auto& slot : interstitials) {
      EXPECT_FALSE(lacksButton(slot)) << "a person must be able to leave";
      if (!slot.ad) continue;
      EXPECT_LE(closeButtons(*slot.ad->vc()->view()), 1U);
      if (slot.ad->vc()->presentingViewController()) ++presented;
    }
    EXPECT_LE(presented, 1U);
    size_t covers = 0;
    for (const auto& subview : window->view().subviews()) {
      const bool isCover = headless::RecordingViewPeer::of(*subview).isModal();
      EXPECT_TRUE(isCover || covers == 0) << "nothing comes up over a screen";
      covers += isCover ? 1 : 0;
    }
    EXPECT_LE(covers, 2U) << "a screen, and another network's over it";
    EXPECT_LE(platform->webViews().size(), 2 * (interstitials.size() + banners.size()) + 1);
  }

  int64_t lastLock = 30;
  Handle locks = platform->notificationCenter().addObserver(
      VeltoNotificationUIInterfaceOrientationMaskLock, [this](const NSNotification& notification) {
        if (const auto* mask = std::get_if<int64_t>(&notification.object)) lastLock = *mask;
      });
  const std::shared_ptr<StrictSink> timelines = std::make_shared<StrictSink>();
  const std::shared_ptr<WalkNetwork> network = std::make_shared<WalkNetwork>();
  std::mt19937 random;
  std::vector<Interstitial> interstitials = std::vector<Interstitial>(2);
  std::vector<Banner> banners = std::vector<Banner>(2);
  std::vector<std::weak_ptr<UIViewController>> working;
  const std::vector<std::string> commands{
      "mraid://expand",
      "mraid://close",
      "mraid://resize",
      "mraid://unload",
      "mraid://expand?url=https%3A%2F%2Fads.example%2Fsdk%2Ftwo",
      mraid(R"(setResizeProperties?p={"width":200,"height":100,"offsetX":0,"offsetY":0})"),
      mraid(R"(setOrientationProperties?p={"forceOrientation":"landscape"})")};
};

TEST_P(StateWalk, KeepsItsPromises) {
  for (int i = 0; i < 3000 && !HasFailure(); ++i) {
    SCOPED_TRACE("step " + std::to_string(i));
    step();
    check();
  }
  for (auto& slot : interstitials) letGo(slot);
  for (auto& slot : banners) letGo(slot);
  EXPECT_TRUE(timelines->open.empty()) << "no load goes on without its controller";
  EXPECT_GT(timelines->ends.size(), 10U) << "the walk meets many ends";
  window->show();
  platform->advance(std::chrono::seconds(20));
  EXPECT_TRUE(platform->webViews().empty());
  EXPECT_TRUE(window->view().subviews().empty());
  EXPECT_TRUE(window->view().constraints().empty());
  EXPECT_TRUE(window->controller()->childViewControllers().empty());
  EXPECT_EQ(platform->views().contentHeld(), 0);
  for (const auto& controller : working) EXPECT_TRUE(controller.expired());
  EXPECT_EQ(lastLock, 30) << "no orientation stays locked";
  EXPECT_EQ(platform->device().facts.orientation, 1) << "nor forced";
  for (const auto& adapter : network->adapters) EXPECT_TRUE(adapter.expired());
}

INSTANTIATE_TEST_SUITE_P(Seeds, StateWalk, ::testing::Range(1U, 17U));

}  // namespace
}  // namespace velto
