// Loads, from the address or the document to the ads.
#include "velto/platform/Clock.h"
#include "velto/platform/Durations.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/MediaSystem.h"
#include "velto/platform/NSBundle.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"
#include "velto/video/VideoAdBreak.h"

#include <algorithm>
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
    case VASTError::Wrapper:
      return "an address, the load's or a wrapper's, is none or may not be followed";
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
    case VASTError::Linear:
      return "nothing here plays films";
    case VASTError::CompanionRequired:
      return "an ad that must be shown beside it cannot be";
    default:
      return "the ad cannot be shown";
  }
}

}  // namespace

void VideoAdBreak::tellFailure(VASTError error) {
  tell([&](auto& to, auto& ad) {
    to.veltoVideoAdDidFail(ad, {static_cast<int>(error), explanationOf(error)});
  });
}

// `again`: the same load, for later.
bool VideoAdBreak::beginLoad(const std::function<void(VideoAdBreak&)>& again) {
  if (!Platform::currentOrNull()) return false;
  if (state_ == State::Playing) {
    if (isStopped_ || (endsWithThis_ && pod_.empty() && !upcoming_)) later_ = again;
    return false;
  }
  if (isEnding_) {
    later_ = again;
    return false;
  }
  endLoad(Why::LoadedAnew);
  setState(State::Loading);
  later_ = nullptr;
  lastLoad_ = again;
  isStopped_ = false;
  ++load_;
  loadRecord_ = placement_->begin(std::exchange(askedBy_, VeltoAskedBy::Application));
  loadedWith_ = settings_;
  *sound_ = {settings_.startsMuted, settings_.volume};
  pod_.clear();
  spare_.clear();
  resolving_.cancel();
  // While documents come.
  isMediaReady_ = false;
  found_.reset();
  begunAt_ = Platform::current().clock().monotonicSeconds();
  Platform::current().media().prepare([weak = weak_from_this(), of = load_] {
    const auto alive = weak.lock();
    if (!alive || alive->load_ != of) return;
    alive->isMediaReady_ = true;
    if (auto found = std::exchange(alive->found_, std::nullopt)) alive->loaded(std::move(*found));
  });
  return true;
}

// For what is left of the load's time. Who asked what plays before would wait inside that question, and with it the application's
// main thread: what is not ready by then plays nothing.
void VideoAdBreak::waitForMedia(VASTResolution found) {
  found_ = std::move(found);
  auto& platform = Platform::current();
  const auto passed = nanosecondsIn(platform.clock().monotonicSeconds() - begunAt_);
  const auto left = std::max<std::chrono::nanoseconds>(loadedWith_.loadTimeout - passed, {});
  platform.mainQueue().postAfter(left, [weak = weak_from_this(), of = load_] {
    const auto alive = weak.lock();
    if (!alive || alive->load_ != of || !alive->found_) return;
    size_t place = 0;
    const auto unplayed = std::exchange(alive->found_, std::nullopt);
    for (const auto& ad : unplayed->pod) alive->tellUnplayed(ad, ++place, VASTError::Linear);
    alive->loadFailed(VASTError::Linear);
  });
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
  if (loadedWith_.contentPosition) macros.setTime(VASTMacro::MediaPlayhead, *loadedWith_.contentPosition);
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
  made.heard = [notes = VideoAdNotes(loadRecord_)](const VASTStep& step) { notes.step(step); };
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

// While ads play, nothing happens, as with the application's own.
void VideoAdBreak::reload() {
  if (!lastLoad_ || state_ == State::Playing) return;
  askedBy_ = VeltoAskedBy::Inspector;
  const auto again = lastLoad_;
  again(*this);
  askedBy_ = VeltoAskedBy::Application;
}

void VideoAdBreak::loaded(VASTResolution found) {
  if (state_ != State::Loading) return;
  if (found.pod.empty()) return loadFailed(found.error.value_or(VASTError::NoAdsAfterWrapper));
  if (!isMediaReady_) return waitForMedia(std::move(found));
  pod_.assign(std::make_move_iterator(found.pod.begin()), std::make_move_iterator(found.pod.end()));
  spare_.assign(std::make_move_iterator(found.spare.begin()), std::make_move_iterator(found.spare.end()));
  number_ = 0;
  count_ = pod_.size();
  loadedAt_ = Platform::current().clock().monotonicSeconds();
  loadRecord_->add(VeltoTimelineKind::Ready,
                   VeltoVideoPod{static_cast<int>(pod_.size()), static_cast<int>(spare_.size())});
  setState(State::Ready);
  tell([](auto& to, auto& ad) { to.veltoVideoAdDidLoad(ad); });
}

void VideoAdBreak::loadFailed(VASTError error) {
  if (state_ != State::Loading) return;
  const bool hasNone = error == VASTError::NoAdsAfterWrapper;
  if (!loadRecord_->has(VeltoTimelineKind::VideoFailed)) VideoAdNotes(loadRecord_).failed(error);
  endLoad(hasNone                      ? Why::VideoWithoutAd
          : error == VASTError::Linear ? Why::VideoFileFailed
                                       : Why::VideoDocumentFailed);
  setState(State::Empty);
  ++load_;
  tellFailure(error);
}

}  // namespace velto
