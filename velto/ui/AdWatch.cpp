// When to look, and what for.
#include "velto/ui/AdWatch.h"

#include "velto/measurement/ViewSight.h"
#include "velto/platform/Clock.h"
#include "velto/platform/Durations.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ui/ViewChanges.h"
#include "velto/platform/ui/WKWebView.h"

#include <algorithm>

namespace velto {
namespace {

constexpr char pauseScript[] =
    "window.veltoPaused = [...document.querySelectorAll('video, audio')].filter(media => !media.paused);"
    "veltoPaused.forEach(media => media.pause());0";
constexpr char resumeScript[] =
    "(window.veltoPaused || []).forEach(media => media.play().catch(() => {}));window.veltoPaused = [];0";

constexpr double atOnce = 0.001;  // seconds; what is due sooner is due now

CGRect widened(const CGRect& rect, double by) {
  return {{rect.minX() - by, rect.minY() - by}, {rect.size.width + 2 * by, rect.size.height + 2 * by}};
}

double now() {
  auto* platform = Platform::currentOrNull();
  return platform ? platform->clock().monotonicSeconds() : 0;
}

}  // namespace

std::shared_ptr<AdWatch> AdWatch::watch(std::weak_ptr<WKWebView> page, const VeltoHeavyAdLimits& limits,
                                        Heavy heavy) {
  std::shared_ptr<AdWatch> made(new AdWatch(std::move(page), limits, std::move(heavy)));
  made->await();
  return made;
}

// --- weighing

void AdWatch::await() {
  const auto page = page_.lock();
  if (!page) return;
  work_ = page->webPeer().afterUse(stepOfWork, [weak = weak_from_this()] {
    if (const auto alive = weak.lock()) alive->worked();
  });
}

void AdWatch::worked() {
  const double wait = lastWeighed_ ? *lastWeighed_ + interval - now() : 0;
  auto* platform = Platform::currentOrNull();
  if (wait <= atOnce || !platform) return weighAndTell();
  platform->mainQueue().postAfter(nanosecondsIn(wait), [weak = weak_from_this()] {
    if (const auto alive = weak.lock()) alive->weighAndTell();
  });
}

void AdWatch::weighAndTell() {
  add();
  await();
  tell();
}

void AdWatch::tell() {
  const auto alive = shared_from_this();
  for (const auto& excess : std::exchange(untold_, {})) heavy_(excess);
}

void AdWatch::add() {
  const auto page = page_.lock();
  if (!page || !Platform::currentOrNull()) return;
  const double at = now();
  const auto use = page->webPeer().use();
  if (use.process != 0) lastWeighed_ = at;
  if (use.touched) touched();
  for (const auto& excess : scales_.add({at, use, isUnseen_ && use.hidden})) untold_.push_back(excess);
}

std::optional<VeltoAdWeight> AdWatch::weigh() {
  add();
  if (!untold_.empty())
    Platform::current().mainQueue().post([weak = weak_from_this()] {
      if (const auto alive = weak.lock()) alive->tell();
    });
  return scales_.isKnown() ? std::optional(scales_.weight()) : std::nullopt;
}

// --- sight

void AdWatch::lookAtSight() {
  changes_ = ViewChanges::observe([this] { noteChange(); });
  lookAfter(interval);
}

void AdWatch::pauseUnseen() {
  if (std::exchange(pauses_, true) || !isUnseen_) return;
  if (const auto page = page_.lock()) setPaused(*page, true);
}

// The script does not reach frames of elsewhere, nor sound that is no element: that goes on unheard.
void AdWatch::setPaused(WKWebView& page, bool paused) {
  page.evaluateJavaScript(paused ? pauseScript : resumeScript, nullptr);
  page.setMuted(paused);
}

// What comes into sight must be there with the next frame, or the next but one or two. What leaves it has time.
void AdWatch::noteChange() {
  if (!isUnseen_ && !pauses_) {
    if (!lookDue_) lookAfter(interval);  // what is due comes no later than that
    return;
  }
  lookAfter(lookedAt_ ? std::max(0.0, *lookedAt_ + glance - now()) : 0);
}

void AdWatch::lookAfter(double seconds) {
  auto* platform = Platform::currentOrNull();
  const double due = now() + seconds;
  if (!platform || (lookDue_ && *lookDue_ <= due)) return;
  lookDue_ = due;
  platform->mainQueue().postAfter(nanosecondsIn(seconds), [weak = weak_from_this(), due] {
    const auto alive = weak.lock();
    if (alive && alive->lookDue_ == due) alive->look();
  });
}

void AdWatch::look() {
  lookDue_.reset();
  const auto page = page_.lock();
  if (!page || !Platform::currentOrNull()) return;
  lookedAt_ = now();
  const bool seen = isSeen(*page);
  if (seen) {
    unseenSince_.reset();
  } else if (!isUnseen_) {
    if (!unseenSince_) unseenSince_ = now();
    const double wait = pauses_ ? 0 : *unseenSince_ + interval - now();
    if (wait > atOnce) return lookAfter(wait);
  }
  setSeen(*page, seen);
}

// One of which nothing can be told may be seen.
bool AdWatch::isSeen(const WKWebView& page) const {
  AdSight sight = sightOf(&page, {});
  sight.measurable = true;
  sight.window = widened(sight.window, margin);
  for (auto& clip : sight.clips) clip = widened(clip, margin);
  return viewabilityOf(sight).pixelsInView > 0;
}

// In no window, or in one that is hidden, the toolkit itself tells the engine.
void AdWatch::setSeen(WKWebView& page, bool seen) {
  page.webPeer().setInSight(seen || !page.isInWindow());
  if (std::exchange(isUnseen_, !seen) == !seen) return;
  if (pauses_) setPaused(page, !seen);
  if (seen) return;
  add();   // what it uses from here on, it uses for nobody
  tell();  // and who waits for its work waits on
}

}  // namespace velto
