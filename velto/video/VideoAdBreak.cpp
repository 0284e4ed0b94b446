// Pods, spare ads, the place where they play.
#include "velto/video/VideoAdBreak.h"

#include "velto/platform/Clock.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <utility>

namespace velto {

std::shared_ptr<VideoAdBreak> VideoAdBreak::make(std::weak_ptr<VeltoVideoAd> ad,
                                                 std::weak_ptr<VeltoVideoAdDelegate> delegate) {
  std::shared_ptr<VideoAdBreak> made(new VideoAdBreak(std::move(ad), std::move(delegate)));
  made->list(made->weak_from_this());
  return made;
}

VideoAdBreak::VideoAdBreak(std::weak_ptr<VeltoVideoAd> ad, std::weak_ptr<VeltoVideoAdDelegate> delegate)
    : ad_(std::move(ad)), delegate_(std::move(delegate)) {
  platformGoes_ = Platform::current().notificationCenter().addObserver(
      notificationPlatformWillGo, [this](const NSNotification&) { letGo(Why::PlatformGone); });
}

// The ad may go inside: nothing of it is touched afterwards.
void VideoAdBreak::tell(const Call& call) {
  const auto self = shared_from_this();
  const auto ad = ad_.lock();
  const auto delegate = delegate_.lock();
  if (ad && delegate) call(*delegate, *ad);
}

// --- playing

bool VideoAdBreak::playIn(const std::shared_ptr<UIView>& view) {
  if (state_ != State::Ready || !view || !view->isInWindow()) return cannotPlay();
  auto screen = VideoAdScreen::make(loadedWith_.showsControls);
  screen->fill(view);
  return begin(std::move(screen));
}

bool VideoAdBreak::playOver(const std::shared_ptr<UIViewController>& controller) {
  if (state_ != State::Ready || !controller || !controller->canPresent()) return cannotPlay();
  auto screen = VideoAdScreen::make(loadedWith_.showsControls);
  screen->presentOver(controller, nullptr);
  return begin(std::move(screen));
}

bool VideoAdBreak::cannotPlay() {
  if (loadRecord_ && state_ == State::Ready) loadRecord_->showFailed(Why::WindowNotOnScreen);
  return false;
}

bool VideoAdBreak::begin(std::shared_ptr<VideoAdScreen> screen) {
  loadRecord_->add(VeltoTimelineKind::ShowAsked, VeltoAskedBy::Application);
  setState(State::Playing);
  screen_ = std::move(screen);
  // Never inside the application's call.
  Platform::current().mainQueue().post([weak = weak_from_this(), of = load_] {
    const auto alive = weak.lock();
    if (!alive || alive->load_ != of || alive->state_ != State::Playing) return;
    alive->contentWaits_ = true;
    alive->tell([](auto& to, auto& ad) { to.veltoVideoAdDidRequestContentPause(ad); });
    if (alive->state_ == State::Playing && alive->load_ == of) alive->next();
  });
  return true;
}

void VideoAdBreak::next() {
  auto show = std::exchange(upcoming_, nullptr);
  if (!show && pod_.empty()) return finish();
  ++number_;
  if (!show) {
    show = makeShow(std::move(pod_.front()), number_);
    pod_.pop_front();
  }
  play(std::move(show));
}

// So that there is no gap between two ads.
void VideoAdBreak::adNearsEnd() {
  if (upcoming_ || pod_.empty() || !screen_) return;
  upcoming_ = makeShow(std::move(pod_.front()), number_ + 1);
  pod_.pop_front();
  upcoming_->prepare();
}

// What speaks against it when its turn has come.
std::optional<VASTError> VideoAdBreak::faultNow(const VASTAd& ad) const {
  if (ad.expires && Platform::current().clock().monotonicSeconds() - loadedAt_ > *ad.expires)
    return VASTError::NotShownInTime;
  const auto can = std::count_if(ad.companions.begin(), ad.companions.end(), VideoAdPage::canShow);
  const bool lacksSome = can < static_cast<std::ptrdiff_t>(ad.companions.size());
  const bool lacksRequired = ad.companionsRequired == VASTCompanionsRequired::All   ? lacksSome
                             : ad.companionsRequired == VASTCompanionsRequired::Any ? lacksSome && can == 0
                                                                                    : false;
  return lacksRequired ? std::optional(VASTError::CompanionRequired) : std::nullopt;
}

// The servers of those whose turn does not come.
void VideoAdBreak::tellShortened() {
  if (state_ != State::Playing) return;
  if (const auto next = std::exchange(upcoming_, nullptr)) {
    next->close();
    pod_.push_front(next->tracker().ad());
  }
  for (auto& ad : std::exchange(pod_, {})) tellUnplayed(std::move(ad), ++number_, VASTError::BreakShortened);
}

void VideoAdBreak::tellUnplayed(VASTAd ad, size_t place, VASTError error) {
  VideoAdNotes(loadRecord_, place).failed(error);
  VASTTracker tracker(std::move(ad), macros());
  tracker.observeSent(VideoAdNotes(loadRecord_, place).receipts());
  tracker.failed(error);
}

std::shared_ptr<VideoAdShow> VideoAdBreak::makeShow(VASTAd ad, size_t number) {
  return std::make_shared<VideoAdShow>(
      std::move(ad), macros(),
      VideoAdShow::Surroundings{loadedWith_, screen_, sound_, number, count_,
                                isFullscreen_ || screen_->isWhole(), loadRecord_},
      weak_from_this());
}

void VideoAdBreak::play(std::shared_ptr<VideoAdShow> show) {
  removeCompanions();
  show_ = std::move(show);
  showOf_ = load_;
  const auto begins = show_;  // the next one may take its place inside
  if (const auto fault = faultNow(begins->tracker().ad())) begins->refuse(*fault);
  begins->begin();
}

std::shared_ptr<VideoAdShow> VideoAdBreak::playing() const {
  return state_ == State::Playing && showOf_ == load_ ? show_ : nullptr;
}

void VideoAdBreak::adStarted() {
  if (!loadRecord_->has(VeltoTimelineKind::Appeared)) loadRecord_->add(VeltoTimelineKind::Appeared);
  const auto show = show_;
  tell([&](auto& to, auto& ad) { to.veltoVideoAdDidStart(ad, show->info()); });
}

void VideoAdBreak::adPassed(VeltoVideoAdQuartile quartile) {
  tell([&](auto& to, auto& ad) { to.veltoVideoAdDidPass(ad, quartile); });
}

void VideoAdBreak::adPaused(bool paused) {
  tell([&](auto& to, auto& ad) { paused ? to.veltoVideoAdDidPause(ad) : to.veltoVideoAdDidResume(ad); });
}

void VideoAdBreak::adPressed() {
  tell([](auto& to, auto& ad) { to.veltoVideoAdDidPress(ad); });
}

void VideoAdBreak::adMuted(bool muted) {
  tell([&](auto& to, auto& ad) { to.veltoVideoAdDidChangeMuted(ad, muted); });
}

void VideoAdBreak::adEnded(VideoAdEnd how, std::optional<VASTError> error, bool hadStarted) {
  const auto self = shared_from_this();
  endsWithThis_ = how != VideoAdEnd::Failed || hadStarted || spare_.empty();
  switch (how) {
    case VideoAdEnd::Completed:
      tell([](auto& to, auto& ad) { to.veltoVideoAdDidComplete(ad); });
      break;
    case VideoAdEnd::Skipped:
      tell([](auto& to, auto& ad) { to.veltoVideoAdDidSkip(ad); });
      break;
    case VideoAdEnd::Failed:
      if (!hadStarted && !spare_.empty()) {
        auto ad = std::move(spare_.front());
        spare_.pop_front();
        return play(makeShow(std::move(ad), number_));
      }
      tellFailure(error.value_or(VASTError::Linear));
      break;
    case VideoAdEnd::Closed:
    case VideoAdEnd::Left:
      why_ = how == VideoAdEnd::Left ? Why::ClosedByPerson : Why::Removed;
      return finish();
  }
  endsWithThis_ = false;
  if (state_ == State::Playing && screen_) next();  // else the application has stopped it meanwhile
}

// Where nothing was seen, and nobody took it away, no ad could be played.
VideoAdBreak::Why VideoAdBreak::whyFinished() const {
  const bool wasSeen = loadRecord_->has(VeltoTimelineKind::Appeared);
  return why_.value_or(wasSeen ? Why::VideoOver : Why::VideoFileFailed);
}

void VideoAdBreak::endLoad(Why why) {
  if (const auto ending = std::exchange(loadRecord_, nullptr)) {
    if (ending->has(VeltoTimelineKind::Appeared)) ending->add(VeltoTimelineKind::Disappeared);
    ending->end(why);
  }
  why_.reset();
}

void VideoAdBreak::setState(State state) {
  if (std::exchange(state_, state) != state) tellChanged();
}

const char* VideoAdBreak::stateName() const {
  switch (state_) {
    case State::Loading:
      return "loading";
    case State::Ready:
      return "ready";
    case State::Playing:
      return "playing";
    case State::Empty:
      break;
  }
  return "empty";
}

void VideoAdBreak::finish() {
  if (state_ != State::Playing) return;
  const auto self = shared_from_this();
  isStopped_ = endsWithThis_ = false;
  isEnding_ = true;
  tellShortened();
  endLoad(whyFinished());
  setState(State::Empty);
  ++load_;
  pod_.clear();
  spare_.clear();
  removeScreen();
  if (std::exchange(contentWaits_, false))
    tell([](auto& to, auto& ad) { to.veltoVideoAdDidRequestContentResume(ad); });
  isEnding_ = false;
  tell([](auto& to, auto& ad) { to.veltoVideoAdDidEndAll(ad); });
  if (const auto begin = std::exchange(later_, nullptr)) begin(*this);
}

void VideoAdBreak::removeScreen() {
  if (const auto upcoming = std::exchange(upcoming_, nullptr)) upcoming->close();
  if (const auto screen = std::exchange(screen_, nullptr)) screen->remove();
}

void VideoAdBreak::stop() {
  const auto self = shared_from_this();
  resolving_.cancel();
  found_.reset();
  later_ = nullptr;
  ++load_;
  if (state_ != State::Playing) {
    endLoad(Why::Removed);
    return setState(State::Empty);
  }
  isStopped_ = true;
  why_ = Why::Removed;
  if (show_) show_->close();
  tellShortened();
  // The application hears of it in a later turn, as of all else.
  Platform::current().mainQueue().post([weak = weak_from_this(), of = load_] {
    const auto alive = weak.lock();
    if (alive && alive->load_ == of) alive->finish();
  });
  removeScreen();
}

void VideoAdBreak::letGo(Why why) {
  const auto self = shared_from_this();
  ad_.reset();
  delegate_.reset();
  resolving_.cancel();
  found_.reset();
  later_ = lastLoad_ = nullptr;
  if (show_) show_->close();
  tellShortened();
  state_ = State::Empty;
  ++load_;
  endLoad(why);
  removeScreen();
  removeCompanions();
}

void VideoAdBreak::setFullscreen(bool fullscreen) {
  isFullscreen_ = fullscreen;
  for (const auto& show : {show_, upcoming_})
    if (show) show->setFullscreen(fullscreen || (screen_ && screen_->isWhole()));
}

void VideoAdBreak::post(std::function<void(VideoAdShow&)> wish) const {
  auto* platform = Platform::currentOrNull();
  if (!show_ || !platform) return;
  platform->mainQueue().post([of = std::weak_ptr(show_), wish = std::move(wish)] {
    if (const auto show = of.lock()) wish(*show);
  });
}

// --- companions

// Nobody would hear of a click on them any more.
void VideoAdBreak::removeCompanions() {
  for (const auto& [place, page] : std::exchange(companions_, {}))
    if (page) page->view()->removeFromSuperview();
}

std::shared_ptr<UIView> VideoAdBreak::companionView(size_t place) {
  if (!show_ || place >= show_->tracker().ad().companions.size() || !Platform::currentOrNull())
    return nullptr;
  auto& page = companions_[place];
  if (!page) {
    const auto& companion = show_->tracker().ad().companions[place];
    const std::weak_ptr<VideoAdShow> of = show_;
    page = VideoAdPage::make({companion.resources, companion.clickThrough, companion.altText},
                             {companion.width, companion.height},
                             {[of, place] {
                                if (const auto show = of.lock()) show->tracker().companionShown(place);
                              },
                              [of, place]() -> std::optional<std::string> {
                                const auto show = of.lock();
                                return show ? show->tracker().companionClicked(place) : std::nullopt;
                              },
                              [of] {
                                if (const auto show = of.lock()) show->companionFailed();
                              }});
  }
  return page ? page->view() : nullptr;
}

}  // namespace velto
