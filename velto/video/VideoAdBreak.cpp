// Loads, pods, spare ads.
#include "velto/video/VideoAdBreak.h"

#include "velto/platform/Clock.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/NSBundle.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"

#include <cmath>
#include <iterator>
#include <utility>

namespace velto {
namespace {

const char* explanationOf(VASTError error) {
  switch (error) {
    case VASTError::NotXML:
      return "the document is not XML";
    case VASTError::NotVAST:
      return "the document lacks what it must have";
    case VASTError::VersionNotSupported:
      return "the document is of a version that is not read";
    case VASTError::Trafficking:
    case VASTError::WrongLinearity:
      return "the ad is of a kind that is not played here";
    case VASTError::WrongDuration:
      return "the ad is too long";
    case VASTError::CategoryMissing:
    case VASTError::CategoryBlocked:
      return "the ad's category is not wanted";
    case VASTError::WrapperTimeout:
      return "no answer came in time";
    case VASTError::WrapperLimit:
      return "too many wrappers";
    case VASTError::NoAdsAfterWrapper:
      return "there is no ad";
    case VASTError::NotShownInTime:
      return "the ad is too old by now";
    case VASTError::FileNotFound:
      return "the ad's file was not found";
    case VASTError::FileTimeout:
      return "the ad's file did not come in time";
    case VASTError::NoSupportedFile:
      return "none of the ad's files can be played here";
    case VASTError::FileNotShown:
      return "the ad's file cannot be decoded, or breaks off";
    default:
      return "the ad cannot be shown";
  }
}

}  // namespace

VideoAdBreak::VideoAdBreak(std::weak_ptr<VeltoVideoAd> ad, std::weak_ptr<VeltoVideoAdDelegate> delegate)
    : ad_(std::move(ad)), delegate_(std::move(delegate)) {
  platformGoes_ = Platform::current().notificationCenter().addObserver(
      notificationPlatformWillGo, [this](const NSNotification&) { letGo(); });
}

// The ad may go inside: nothing of it is touched afterwards.
void VideoAdBreak::tell(const Call& call) {
  const auto self = shared_from_this();
  const auto ad = ad_.lock();
  const auto delegate = delegate_.lock();
  if (ad && delegate) call(*delegate, *ad);
}

void VideoAdBreak::tellFailure(VASTError error) {
  tell([&](auto& to, auto& ad) {
    to.veltoVideoAdDidFail(ad, {static_cast<int>(error), explanationOf(error)});
  });
}

// --- loading

// `again`: the same load, for later.
bool VideoAdBreak::beginLoad(const std::function<void(VideoAdBreak&)>& again) {
  if (!Platform::currentOrNull()) return false;
  if (state_ == State::Playing) {
    if (isStopped_ || (endsWithThis_ && pod_.empty() && !upcoming_)) later_ = again;
    return false;
  }
  state_ = State::Loading;
  later_ = nullptr;
  isStopped_ = false;
  ++load_;
  loadedWith_ = settings_;
  *sound_ = {settings_.startsMuted, settings_.volume};
  pod_.clear();
  spare_.clear();
  resolving_.cancel();
  return true;
}

VASTMacros VideoAdBreak::macros() const {
  VASTMacros macros;
  const auto set = [&](VASTMacro macro, const std::string& value) {
    if (!value.empty()) macros.set(macro, value);
  };
  // The place in the content, that this is a player in the stream, and what it reads and does, by the standard's numbers.
  set(VASTMacro::BreakPosition, std::to_string(static_cast<int>(loadedWith_.position) + 1));
  set(VASTMacro::PlacementType, "1");
  using Words = std::vector<std::string>;
  macros.set(VASTMacro::VASTVersions, Words{"2", "3", "5", "6", "7", "8", "11", "12", "13", "14"});
  macros.set(VASTMacro::APIFrameworks, "7");
  macros.set(VASTMacro::PlayerCapabilities, Words{"skip", "mute", "autoplay", "mautoplay", "icon"});
  set(VASTMacro::OMIDPartner, VideoMeasurement::partner());
  set(VASTMacro::ContentURI, loadedWith_.contentURL);
  set(VASTMacro::ContentId, loadedWith_.contentIdentifier);
  set(VASTMacro::GDPRConsent, loadedWith_.consent);
  set(VASTMacro::Regulations, loadedWith_.regulations);
  set(VASTMacro::AppBundle, Platform::current().mainBundle().bundleIdentifier().value_or(""));
  if (screen_) {
    const auto size = screen_->stage()->bounds().size;
    macros.set(VASTMacro::PlayerSize,
               Words{numberText(std::round(size.width)), numberText(std::round(size.height))});
  }
  return macros;
}

VASTSettings VideoAdBreak::resolverSettings() const {
  VASTSettings made;
  made.mostWrappers = loadedWith_.mostWrappers;
  made.timeout = loadedWith_.answerTimeout;
  made.wholeTimeout = loadedWith_.loadTimeout;
  made.longest = loadedWith_.longest;
  made.macros = macros();
  return made;
}

void VideoAdBreak::load(const std::string& address) {
  if (!beginLoad([address](VideoAdBreak& self) { self.load(address); })) return;
  const auto url = NSURL::URLByEscaping(macros().expanded(address));
  const auto of = load_;
  const auto weak = weak_from_this();
  if (!url || !url->host()) {
    return Platform::current().mainQueue().post([weak, of] {
      const auto alive = weak.lock();
      if (alive && alive->load_ == of) alive->loadFailed(VASTError::Wrapper);
    });
  }
  resolving_ = VASTResolver::resolve(*url, resolverSettings(), whenResolved());
}

void VideoAdBreak::load(const VMAPAdSource& source) {
  if (!beginLoad([source](VideoAdBreak& self) { self.load(source); })) return;
  resolving_ = resolveVMAPSource(source, resolverSettings(), whenResolved());
}

// Reading a large one takes longer than a frame may.
void VideoAdBreak::loadDocument(const std::string& text) {
  if (!beginLoad([text](VideoAdBreak& self) { self.loadDocument(text); })) return;
  Platform::current().performInBackground([weak = weak_from_this(), of = load_, text] {
    const auto document = std::make_shared<VASTDocument>(VASTDocument::read(text));
    auto* platform = Platform::currentOrNull();
    if (!platform) return;
    platform->mainQueue().post([weak, of, document] {
      const auto alive = weak.lock();
      if (alive && alive->load_ == of) alive->resolve(std::move(*document));
    });
  });
}

void VideoAdBreak::resolve(VASTDocument document) {
  resolving_ = VASTResolver::resolve(std::move(document), resolverSettings(), whenResolved());
}

VASTResolver::Completion VideoAdBreak::whenResolved() {
  return [weak = weak_from_this(), of = load_](VASTResolution found) {
    const auto alive = weak.lock();
    if (alive && alive->load_ == of) alive->loaded(std::move(found));
  };
}

void VideoAdBreak::loaded(VASTResolution found) {
  if (state_ != State::Loading) return;
  if (found.pod.empty()) return loadFailed(found.error.value_or(VASTError::NoAdsAfterWrapper));
  pod_.assign(std::make_move_iterator(found.pod.begin()), std::make_move_iterator(found.pod.end()));
  spare_.assign(std::make_move_iterator(found.spare.begin()), std::make_move_iterator(found.spare.end()));
  number_ = 0;
  count_ = pod_.size();
  loadedAt_ = Platform::current().clock().monotonicSeconds();
  state_ = State::Ready;
  tell([](auto& to, auto& ad) { to.veltoVideoAdDidLoad(ad); });
}

void VideoAdBreak::loadFailed(VASTError error) {
  if (state_ != State::Loading) return;
  state_ = State::Empty;
  ++load_;
  tellFailure(error);
}

// --- playing

bool VideoAdBreak::playIn(const std::shared_ptr<UIView>& view) {
  if (state_ != State::Ready || !view || !view->isInWindow()) return false;
  auto screen = VideoAdScreen::make(loadedWith_.showsControls);
  screen->fill(view);
  return begin(std::move(screen));
}

bool VideoAdBreak::playOver(const std::shared_ptr<UIViewController>& controller) {
  if (state_ != State::Ready || !controller || !controller->canPresent()) return false;
  auto screen = VideoAdScreen::make(loadedWith_.showsControls);
  screen->presentOver(controller, nullptr);
  return begin(std::move(screen));
}

bool VideoAdBreak::begin(std::shared_ptr<VideoAdScreen> screen) {
  state_ = State::Playing;
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

bool VideoAdBreak::isTooOld(const VASTAd& ad) const {
  return ad.expires && Platform::current().clock().monotonicSeconds() - loadedAt_ > *ad.expires;
}

std::shared_ptr<VideoAdShow> VideoAdBreak::makeShow(VASTAd ad, size_t number) {
  return std::make_shared<VideoAdShow>(std::move(ad), macros(),
                                       VideoAdShow::Surroundings{loadedWith_, screen_, sound_, number, count_,
                                                                 isFullscreen_ || screen_->isWhole()},
                                       weak_from_this());
}

void VideoAdBreak::play(std::shared_ptr<VideoAdShow> show) {
  removeCompanions();
  show_ = std::move(show);
  const auto begins = show_;  // the next one may take its place inside
  if (isTooOld(begins->tracker().ad())) begins->refuse(VASTError::NotShownInTime);
  begins->begin();
}

void VideoAdBreak::adStarted() {
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

void VideoAdBreak::adEnded(VideoAdEnd how, VASTError error, bool hadStarted) {
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
      tellFailure(error);
      break;
    case VideoAdEnd::Closed:
      return finish();
  }
  endsWithThis_ = false;
  if (state_ == State::Playing && screen_) next();  // else the application has stopped it meanwhile
}

void VideoAdBreak::finish() {
  if (state_ != State::Playing) return;
  const auto self = shared_from_this();
  isStopped_ = endsWithThis_ = false;
  const auto of = load_ + 1;
  state_ = State::Empty;
  ++load_;
  pod_.clear();
  spare_.clear();
  removeScreen();
  if (std::exchange(contentWaits_, false))
    tell([](auto& to, auto& ad) { to.veltoVideoAdDidRequestContentResume(ad); });
  tell([](auto& to, auto& ad) { to.veltoVideoAdDidEndAll(ad); });
  if (const auto begin = std::exchange(later_, nullptr); begin && load_ == of) begin(*this);
}

void VideoAdBreak::removeScreen() {
  if (const auto upcoming = std::exchange(upcoming_, nullptr)) upcoming->close();
  if (const auto screen = std::exchange(screen_, nullptr)) screen->remove();
}

void VideoAdBreak::stop() {
  const auto self = shared_from_this();
  resolving_.cancel();
  later_ = nullptr;
  ++load_;
  if (state_ != State::Playing) {
    state_ = State::Empty;
    return;
  }
  isStopped_ = true;
  if (show_) show_->close();
  // The application hears of it in a later turn, as of all else.
  Platform::current().mainQueue().post([weak = weak_from_this(), of = load_] {
    const auto alive = weak.lock();
    if (alive && alive->load_ == of) alive->finish();
  });
  removeScreen();
}

void VideoAdBreak::letGo() {
  const auto self = shared_from_this();
  ad_.reset();
  delegate_.reset();
  resolving_.cancel();
  later_ = nullptr;
  state_ = State::Empty;
  ++load_;
  if (show_) show_->close();
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
                              }});
  }
  return page ? page->view() : nullptr;
}

}  // namespace velto
