// The host application: its windows, its ads, what it does inside their calls, its runs.
#include "World.h"

#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include <algorithm>
#include <csignal>
#include <exception>

#include "Sink.h"

namespace velto::chaos {

using namespace std::chrono_literals;

World::World(Fault fault) : promises(fault) {
  start();
}

World::~World() {
  for (auto& place : places) letGo(place);
  heldOnTo_.clear();
  maskObserver_.cancel();
  slot.reset();
  for (auto& host : hostWindows) host.reset();
  VeltoAdMediationAdapterRegistry::registerAdapter(Network::registeredName, nullptr);
  headless::Platform::uninstall();
}

// --- runs of the application

void World::start() {
  platform = headless::Platform::install(store);
  VeltoAdMediationAdapterRegistry::registerAdapter(Network::registeredName, network);
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";  // what is seen is measured, too
  platform->diagnostics()->keepTrace();
  platform->diagnostics()->keepLog();
  platform->identifierManager().identifier = "secret-identifier";
  platform->application().setPagesNeedTouch(!promises.has(Fault::UntouchedOpen));
  sink_ = std::make_shared<Sink>(*this);
  TimelineHub::shared()->add(sink_);
  server.attach(*platform);
  opened_ = 0;
  lastTouch_.reset();
  lastMask_ = 30;
  maskObserver_ = platform->notificationCenter().addObserver(
      VeltoNotificationUIInterfaceOrientationMaskLock, [this](const NSNotification& notification) {
        if (const auto* mask = std::get_if<int64_t>(&notification.object)) lastMask_ = *mask;
      });
  for (int number = 0; number < windows; ++number) openWindow(number);
  slot = std::make_unique<headless::HostSlot>();
  slot->moveTo(hostWindows[0].get());
  slot->setFrame({{20, 300}, {350, 100}});
  registerKey();
}

void World::registerKey() {
  consent = {};
  VeltoFramework::addVeltoKey("secret-key");
}

void World::relaunch(End how) {
  if (how == End::Killed) {
    // Nothing that happens from here on reaches anybody, nor the store.
    for (auto& place : places)
      if (place.alive) *place.alive = false;
    for (auto& place : places)
      for (auto* ears : {static_cast<Hearing*>(place.bannerEars.get()),
                         static_cast<Hearing*>(place.interstitialEars.get())})
        if (ears) ears->on = nullptr;
    sink_->stop();
    store->failWrites(true);
  }
  const auto letGoOfAll = [this] {
    for (auto& place : places) letGo(place);
  };
  if (how == End::AdsFirst) letGoOfAll();
  checkSecrets();
  server.detach();
  headless::Platform::uninstall();
  letGoOfAll();
  promises.require(how == End::Killed || sink_->open().empty(), "each load has ended with the platform");
  platform->mainQueue().clear();
  slot.reset();
  for (auto& host : hostWindows) host.reset();
  maskObserver_.cancel();
  for (const auto& controller : working_)
    promises.require(controller.expired() || !heldOnTo_.empty(),
                     "nothing is left of an ad after the application");
  working_.clear();
  store->failWrites(false);
  store->failReads(false);
  if (std::exchange(loseStore, false)) {
    store->relaunched();
    store->breakFile();
  }
  platform.reset();
  start();
  server.storeFails(false);
}

void World::openWindow(int number) {
  window(number) = std::make_unique<headless::HostWindow>(CGSize{390, 844}, UIEdgeInsets{47, 0, 34, 0});
}

// --- ads

void World::begin(int number, int host, int kind) {
  auto& place = placement(number);
  letGo(place);
  const int in = host % windows;
  if (!window(in)) openWindow(in);
  const auto controller = host >= windows ? slot->controller() : window(in)->controller();
  place.alive = std::make_shared<bool>(true);
  const auto on = [this, &place, alive = place.alive](Heard heard) { hear(place, alive, heard); };
  if (number < banners) {
    place.bannerEars = std::make_shared<BannerEars>();
    place.bannerEars->host = controller;
    place.bannerEars->on = on;
    const auto size = static_cast<VeltoBannerSize>(kind % 4);
    using Banner = VeltoBannerViewController;
    if (kind / 4 == 0)
      place.banner = Banner::initWithDelegate(place.bannerEars, size, VeltoBannerPositionTop);
    if (kind / 4 == 1)
      place.banner = Banner::initWithDelegate(place.bannerEars, size, VeltoBannerPositionBottom);
    if (kind / 4 == 2) place.banner = Banner::initWithDelegate(place.bannerEars, size, CGPoint{10, 200});
    if (kind / 4 == 3) {
      const auto container = UIView::make();
      container->setFrame({{0, 400}, {390, 300}});
      controller->view()->addSubview(container);
      place.banner = Banner::initWithDelegate(place.bannerEars, size, container);
      if (kind % 2 == 0) container->removeFromSuperview();
    }
    place.banner->setHeavyAdPolicy(static_cast<VeltoHeavyAdPolicy>(kind % 3));
    place.working = place.banner->vc();
  } else {
    place.interstitialEars = std::make_shared<InterstitialEars>();
    place.interstitialEars->host = controller;
    place.interstitialEars->on = on;
    place.interstitial = VeltoInterstitialViewController::initWithDelegate(place.interstitialEars);
    place.interstitial->setAutoShowWhenReady(kind % 3 == 0);
    place.interstitial->setHeavyAdPolicy(static_cast<VeltoHeavyAdPolicy>(kind % 3));
    place.working = place.interstitial->vc();
  }
  std::erase_if(working_, [](const auto& known) { return known.expired(); });
  working_.push_back(place.working);
}

void World::letGo(Placement& place) {
  const auto old = std::move(place);  // it ends at the end of this call, inside it
  place = {};
  if (old.alive) *old.alive = false;
  if (promises.has(Fault::LateCall)) {
    heldOnTo_.insert(heldOnTo_.end(), {old.banner, old.interstitial, old.bannerEars, old.interstitialEars});
  }
}

void World::doAtOnce(Placement& place, Reaction reaction) {
  const auto number = static_cast<int>(&place - places.data());
  switch (reaction) {
    case Reaction::LetGo:
      return letGo(place);
    case Reaction::Load:
      if (place.exists()) place.load();
      return;
    case Reaction::Show:
      if (place.interstitial) place.interstitial->show();
      return;
    case Reaction::Remove:
      if (place.banner) place.banner->removeBanner();
      return;
    case Reaction::Withdraw:
      consent.accepted = false;
      return VeltoFramework::acceptPersonalInfoContent(false);
    case Reaction::CloseWindow:
      return window(number % windows).reset();
    case Reaction::EndPlatform:
      // The application starts again at the end of the step.
      if (std::exchange(endsPlatform_, true)) return;
      server.detach();
      headless::Platform::uninstall();
      return platform->mainQueue().clear();
    case Reaction::RunLoop:  // as a dialog does
      return platform->runUntilIdle();
    case Reaction::Begin:
      return begin(number, number, 1);
  }
}

// --- what ads tell

void World::hear(Placement& place, const std::shared_ptr<bool>& alive, Heard heard) {
  promises.require(*alive, "nobody is called for an ad that was let go of");
  if (promises.broken()) return;
  if (promises.has(Fault::LostCallback) && heard == Heard::Close) return;
  follow(place, heard);
  if (heard == Heard::State || place.reactions.empty()) return;
  const auto reaction = place.reactions.front();
  place.reactions.pop_front();
  doAtOnce(place, reaction);
}

// The order of what one ad tells.
void World::follow(Placement& place, Heard heard) {
  if (heard == Heard::State) {
    const auto before = std::exchange(place.toldState, place.state());
    // With its window it goes without a word but this, and so it does when its presentation is refused.
    if (place.banner || before != VeltoInterstitialStatePresented || place.closing) return;
    place.shown = false;
    place.ready = place.toldState == VeltoInterstitialStateReady;
    return;
  }
  promises.require(platform->mainQueue().isCurrent(), "delegates are called on the main thread");
  promises.require(place.toldState == place.state(), "a new state is told before what made it");
  if (heard == Heard::Press) promises.require(touchedNow, "a press is a person's");
  if (place.banner) return;
  const auto* presenting = place.interstitial->vc()->presentingViewController();
  if (heard == Heard::Finish) {
    promises.require(!place.shown && !place.closing, "no ad becomes ready while another is on the screen");
    place.ready = true;
  } else if (heard == Heard::Appear) {
    promises.require(place.ready && !place.shown && !place.closing && presenting,
                     "what was ready appears once");
    place.shown = true;
  } else if (heard == Heard::Close) {
    promises.require(!place.closing, "an interstitial closes once");
    place.closing = true;
    place.ready = false;
  } else if (heard == Heard::Dismissed) {
    promises.require(place.closing && !presenting, "dismissed comes after close, when the screen has gone");
    place.closing = place.shown = false;
  }
}

// --- for actions

headless::RecordingWebView* World::page(int number) {
  const auto& pages = platform->webViews();
  return pages.empty() ? nullptr : pages[static_cast<size_t>(number) % pages.size()];
}

void World::touch(int number, CGPoint point) {
  if (!window(number)) return;
  willTouch();
  window(number)->tap(point);
}

void World::willTouch() {
  lastTouch_ = platform->clock().monotonicSeconds();
  touchedNow = true;
}

void World::moveTime(std::chrono::nanoseconds by) {
  platform->advance(by);
  server.timePassed(by);
}

void World::run(const Step& step) {
  if (broken()) return;
  touchedNow = false;
  try {
    step.action->run(*this, step.numbers);
    if (!endsPlatform_) settle();
    if (endsPlatform_) relaunch(End::PlatformFirst);
    endsPlatform_ = false;
    check();
  } catch (const std::exception& error) {
    promises.require(false, std::string("nothing throws: ") + error.what());
  }
}

}  // namespace velto::chaos
