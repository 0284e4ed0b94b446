// What must hold after each step, and what may be left at the end.
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>

#include "Sink.h"

namespace velto::chaos {
namespace {

using namespace std::chrono_literals;

// Several times what walks have been seen to need, and far below what a leak would reach.
constexpr size_t mostTimers = 3 * World::placements;
constexpr size_t mostTasks = 100 * World::placements;
constexpr size_t mostWebViews = 3 * World::placements;
constexpr size_t mostBytes = size_t{64} << 20;
constexpr double touchCounts = 2;  // seconds
constexpr int allOrientations = 30;

size_t closeButtons(const UIView& view) {
  size_t count = dynamic_cast<const VeltoCloseButton*>(&view) ? 1 : 0;
  for (const auto& subview : view.subviews()) count += closeButtons(*subview);
  return count;
}

void leak() {
  static std::atomic<char*> forgotten;
  forgotten = new char[size_t{8} << 20];
}

bool isUntold(const Placement& place) {
  return place.exists() && place.toldState != place.state();
}

bool lacksButton(const Placement& place) {
  return place.interstitial && place.shown && !place.closing &&
         closeButtons(*place.interstitial->vc()->view()) == 0;
}

}  // namespace

size_t bytesInUse() {
  const auto heap = mallinfo2();  // all zero where a sanitizer has taken its place, which finds leaks itself
  return heap.uordblks + heap.hblkhd;
}

void Figures::add(const Figures& other) {
  for (const auto sum : {&Figures::steps, &Figures::loads}) this->*sum += other.*sum;
  for (const auto most :
       {&Figures::timers, &Figures::tasks, &Figures::webViews, &Figures::tracks, &Figures::bytes})
    this->*most = std::max(this->*most, other.*most);
  ends |= other.ends;
  entries |= other.entries;
}

// --- timelines

void World::Sink::added(const std::string&, uint64_t load, const VeltoTimelineEntry& entry) {
  if (!world_) return;
  world_->promises.require((entry.kind == VeltoTimelineKind::Asked) == open_.insert(load).second,
                           "a load begins once, and is silent after its end");
  world_->figures.loads += entry.kind == VeltoTimelineKind::Asked ? 1 : 0;
  world_->figures.entries.set(static_cast<size_t>(entry.kind));
  if (entry.detail == VeltoTimelineEntry::Detail(VeltoTap::ClickTracked)) world_->server.clickIsDue();
  auto& queue = world_->platform->mainQueue();
  if (world_->promises.has(Fault::ForgottenTimer) && queue.isCurrent())
    world_->heldOnTo_.push_back(std::make_shared<Handle>(queue.every(1h, [] {})));
  if (world_->promises.has(Fault::ForgottenMemory)) leak();
  if (world_->killAt != entry.kind) return;
  world_->killAt.reset();
  queue.post([world = world_] {
    if (auto* page = world->page(-1)) world->platform->views().endProcess(*page);
  });
}

void World::Sink::ended(const VeltoAdTimeline& told) {
  if (!world_) return;
  auto& kept = world_->promises;
  kept.require(open_.erase(told.load) == 1, "a load has one end");
  kept.require(told.end.has_value(), "an end has a reason");
  world_->figures.ends.set(static_cast<size_t>(*told.end));
  kept.require(std::is_sorted(told.entries.begin(), told.entries.end(),
                              [](const auto& one, const auto& next) { return one.seconds < next.seconds; }) &&
                   told.entries.back().seconds <= told.endSeconds,
               "what is told of a load is in order");
  if (kept.has(Fault::TwoEnds)) kept.require(open_.erase(told.load) == 1, "a load has one end");
}

// --- after each step

// That a window has gone is told a turn later, and a close button that was taken away may come back then.
void World::settle() {
  const auto isUnsettled = [](const Placement& place) { return isUntold(place) || lacksButton(place); };
  if (std::any_of(places.begin(), places.end(), isUnsettled)) platform->runUntilIdle();
}

void World::check() {
  checkTouches();
  checkWindows();
  checkBounds();
  server.checkTracks();
  promises.require(std::none_of(places.begin(), places.end(), isUntold), "each state is told");
}

void World::checkTouches() {
  const auto& opened = platform->application().opened;
  const double now = platform->clock().monotonicSeconds();
  promises.require(opened.size() == opened_ || (lastTouch_ && now <= *lastTouch_ + touchCounts),
                   "no address is opened without a touch");
  opened_ = opened.size();
}

void World::checkWindows() {
  std::map<const UIViewController*, int> presented;
  for (const auto& place : places) {
    promises.require(!lacksButton(place), "a person can leave every screen");
    if (!place.interstitial) continue;
    promises.require(closeButtons(*place.interstitial->vc()->view()) <= 1, "a screen has one close button");
    if (const auto* over = place.interstitial->vc()->presentingViewController()) ++presented[over];
  }
  for (const auto& [over, screens] : presented)
    promises.require(screens == 1, "one screen at a time in a window");
  for (const auto& host : hostWindows) {
    if (!host) continue;
    size_t covers = 0;
    for (const auto& subview : host->view().subviews()) {
      const bool isCover = headless::RecordingViewPeer::of(*subview).isModal();
      promises.require(isCover || covers == 0, "nothing comes up over a screen");
      covers += isCover ? 1 : 0;
    }
    promises.require(covers <= 2, "a window is covered by a screen, and another network's over it");
  }
}

void World::checkBounds() {
  auto& queue = platform->mainQueue();
  figures.timers = std::max(figures.timers, queue.timers());
  figures.tasks = std::max(figures.tasks, queue.pending());
  figures.webViews = std::max(figures.webViews, platform->webViews().size());
  figures.tracks = std::max(figures.tracks, server.waiting());
  promises.require(server.adRequests() <= figures.loads, "a load asks the server once");
  promises.require(queue.timers() <= mostTimers, "timers are bounded");
  promises.require(queue.pending() <= mostTasks, "tasks that wait are bounded");
  promises.require(platform->webViews().size() <= mostWebViews, "web views are bounded");
  // What was let go of in this turn is still about.
  promises.require(!queue.isIdle() || platform->views().contentHeld() <= placements,
                   "content made ready is used or let go of");
  if (++figures.steps % 16 != 0) return;
  figures.bytes = std::max(figures.bytes, bytesInUse());
  promises.require(figures.bytes <= mostBytes, "memory is bounded");
}

// --- at the end

void World::finish() {
  if (broken()) return;
  try {
    server.next.clear();
    for (auto& host : hostWindows)
      if (host) host->show();
    for (auto& place : places) letGo(place);
    platform->advance(90s);  // the last request has given up by then
    checkNothingLeft();
  } catch (const std::exception& error) {
    promises.require(false, std::string("nothing throws: ") + error.what());
  }
}

// What is written for developers names neither the person nor where ads lead.
void World::checkSecrets() {
  std::string written = *platform->diagnostics()->trace();
  for (const auto& line : platform->diagnostics()->lines()) {
    written += line.text;
    for (const auto& [name, value] : line.fields) written += name + value;
  }
  for (const char* secret : {"secret", "52.5123", "13.4123", ".example"})
    promises.require(written.find(secret) == std::string::npos,
                     "what is written for developers has no secrets");
}

void World::checkNothingLeft() {
  checkSecrets();
  promises.require(sink_->open().empty(), "each load ends with its controller");
  promises.require(platform->webViews().empty(), "no web view is left");
  promises.require(platform->views().contentHeld() == 0, "no content made ready is left");
  promises.require(platform->mainQueue().timers() <= 1, "nothing but the tracks' timer goes on");
  for (const auto& host : hostWindows) {
    if (!host) continue;
    promises.require(host->view().constraints().empty(), "no constraint is left");
    promises.require(host->controller()->childViewControllers().size() <= 1, "no controller is left");
    for (const auto& subview : host->view().subviews())
      promises.require(!headless::RecordingViewPeer::of(*subview).isModal(), "no screen is left");
  }
  for (const auto& controller : working_) promises.require(controller.expired(), "no ad is left");
  for (const auto& adapter : network->adapters) promises.require(adapter.expired(), "no adapter is left");
  promises.require(lastMask_ == allOrientations, "no orientation stays locked");
  promises.require(platform->device().facts.orientation == 1, "nor forced");
}

}  // namespace velto::chaos
