// What happens in, addresses out.
#include "velto/vast/VASTTracker.h"

#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTSender.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velto {
namespace {

bool isLater(double seconds, double than) {
  // Players tell times in binary fractions: a quartile that was hit to the letter counts.
  constexpr double slack = 0.001;
  return seconds > than + slack;
}

std::optional<std::string> destination(const std::string& url, const VASTMacros& macros) {
  if (url.empty()) return std::nullopt;
  return macros.expanded(url);
}

}  // namespace

VASTTracker::VASTTracker(VASTAd ad, VASTMacros macros)
    : ad_(std::move(ad)),
      macros_(std::move(macros)),
      shownIcons_(ad_.linear ? ad_.linear->icons.size() : 0),
      shownCompanions_(ad_.companions.size()) {
  if (!ad_.linear) ad_.linear.emplace();
  duration_ = ad_.linear->duration;
}

VASTMacros VASTTracker::macrosNow() const {
  auto macros = macros_;
  macros.set(ad_).setTime(VASTMacro::AdPlayhead, playhead_);
  if (file_) {
    macros.set(VASTMacro::AssetURI, file_->url);
    if (!file_->type.empty()) macros.set(VASTMacro::MediaMIME, file_->type);
  }
  std::vector<std::string> states;
  if (isMuted_) states.emplace_back("muted");
  if (isFullscreen_) states.emplace_back("fullscreen");
  if (!states.empty()) macros.set(VASTMacro::PlayerState, states);
  return macros;
}

void VASTTracker::send(std::string_view event, const std::vector<std::string>& urls,
                       const VASTMacros& macros) const {
  if (urls.empty() || !Platform::currentOrNull()) return;
  VASTSender::Heard heard;
  if (heard_)
    heard = [heard = heard_, event = std::string(event)](const VASTSent& sent) { heard(event, sent); };
  VASTSender::shared()->send(urls, macros, heard);
}

void VASTTracker::tell(std::string_view event) {
  std::vector<std::string> urls;
  for (const auto& tracking : ad_.linear->trackings)
    if (tracking.event == event) urls.push_back(tracking.url);
  send(event, urls, macrosNow());
  if (told_) told_(event);
}

void VASTTracker::chose(const VASTMediaFile& file) {
  file_ = file;
}

void VASTTracker::loaded() {
  if (state_ == State::Ended || std::exchange(hasLoaded_, true)) return;
  tell("loaded");
}

void VASTTracker::impression() {
  if (state_ == State::Ended || std::exchange(hasImpression_, true)) return;
  send("impression", ad_.impressions, macrosNow());
  if (told_) told_("impression");
  tell("creativeView");
}

void VASTTracker::started(std::optional<double> duration) {
  if (state_ != State::Waiting) return;
  loaded();
  impression();
  state_ = State::Playing;
  if (duration && std::isfinite(*duration) && *duration > 0) duration_ = duration;
  tell("start");
  planMoments();
  passUpTo(0);
}

// Quartiles, and the offsets of progress; those that cannot be known have no place. An offset behind the end never comes.
void VASTTracker::planMoments() {
  if (duration_)
    for (const auto& [share, event] :
         {std::pair(0.25, "firstQuartile"), {0.5, "midpoint"}, {0.75, "thirdQuartile"}})
      moments_.push_back({*duration_ * share, event, {}});
  for (const auto& tracking : ad_.linear->trackings) {
    if (tracking.event != "progress" || !tracking.offset) continue;
    if (const auto seconds = tracking.offset->secondsOf(duration_))
      moments_.push_back({*seconds, "progress", {tracking.url}});
  }
  std::stable_sort(moments_.begin(), moments_.end(),
                   [](const auto& a, const auto& b) { return a.seconds < b.seconds; });
}

void VASTTracker::passUpTo(double seconds) {
  while (!moments_.empty() && !isLater(moments_.front().seconds, seconds)) {
    const auto moment = std::move(moments_.front());
    moments_.erase(moments_.begin());
    if (moment.urls.empty()) {
      tell(moment.event);
    } else {
      send(moment.event, moment.urls, macrosNow());
      if (told_) told_(moment.event);
    }
  }
}

void VASTTracker::playhead(double seconds) {
  if (!isPlaying() || !std::isfinite(seconds)) return;
  playhead_ = std::max(0.0, seconds);
  passUpTo(playhead_);
}

void VASTTracker::completed() {
  if (!isPlaying()) return;
  playhead_ = std::max(playhead_, duration_.value_or(0));
  passUpTo(playhead_);
  state_ = State::Ended;
  tell("complete");
}

void VASTTracker::setMuted(bool muted) {
  if (std::exchange(isMuted_, muted) != muted && isPlaying()) tell(muted ? "mute" : "unmute");
}

void VASTTracker::setPaused(bool paused) {
  if (isPlaying() && std::exchange(isPaused_, paused) != paused) tell(paused ? "pause" : "resume");
}

void VASTTracker::setFullscreen(bool fullscreen) {
  if (std::exchange(isFullscreen_, fullscreen) == fullscreen || !isPlaying()) return;
  tell(fullscreen ? "fullscreen" : "exitFullscreen");
  tell(fullscreen ? "playerExpand" : "playerCollapse");
}

void VASTTracker::rewound() {
  if (isPlaying()) tell("rewind");
}

void VASTTracker::acceptedInvitation() {
  if (!isPlaying()) return;
  tell("acceptInvitation");
  tell("acceptInvitationLinear");
}

void VASTTracker::otherInteraction() {
  if (isPlaying()) tell("otherAdInteraction");
}

void VASTTracker::minimized() {
  if (isPlaying()) tell("minimize");
}

bool VASTTracker::maySkip() const {
  const auto& offset = ad_.linear->skipOffset;
  const auto seconds = offset ? offset->secondsOf(duration_) : std::nullopt;
  return isPlaying() && seconds && !isLater(*seconds, playhead_);
}

void VASTTracker::skipped() {
  if (!isPlaying()) return;
  state_ = State::Ended;
  tell("skip");
  tell("closeLinear");
}

void VASTTracker::closed() {
  if (!isPlaying()) return;
  state_ = State::Ended;
  tell("close");
  tell("closeLinear");
}

void VASTTracker::failed(VASTError error) {
  if (state_ == State::Ended && error != VASTError::CompanionNotFetched) return;
  const bool goesOn = error == VASTError::InteractiveNotRun || error == VASTError::VerificationNotRun ||
                      error == VASTError::CompanionNotFetched || error == VASTError::CompanionNotSupported;
  if (!goesOn) state_ = State::Ended;
  send("error", ad_.errors, macrosNow().set(error));
  if (told_) told_("error");
}

std::optional<std::string> VASTTracker::clicked(std::optional<VASTClickPosition> position) {
  auto macros = macrosNow();
  if (position)
    macros.set(VASTMacro::ClickPos,
               {numberText(std::round(position->x)), numberText(std::round(position->y))});
  if (isPlaying()) {
    send("click", ad_.linear->clickTrackings, macros);
    if (told_) told_("click");
  }
  return destination(ad_.linear->clickThrough, macros);
}

void VASTTracker::customClicked() {
  if (!isPlaying()) return;
  send("customClick", ad_.linear->customClicks, macrosNow());
  if (told_) told_("customClick");
}

void VASTTracker::viewability(VASTViewability viewability) {
  if (std::exchange(hasViewability_, true)) return;
  const auto& all = ad_.viewableImpression;
  const auto [event, urls] = viewability == VASTViewability::Viewable ? std::pair("viewable", &all.viewable)
                             : viewability == VASTViewability::NotViewable
                                 ? std::pair("notViewable", &all.notViewable)
                                 : std::pair("viewUndetermined", &all.undetermined);
  send(event, *urls, macrosNow());
  if (told_) told_(event);
}

void VASTTracker::notVerified(const VASTVerification& verification, VASTNotVerified reason) {
  send("verificationNotExecuted", verification.notExecuted,
       macrosNow().set(VASTMacro::Reason, std::to_string(static_cast<int>(reason))));
}

void VASTTracker::iconShown(size_t icon) {
  if (icon >= shownIcons_.size() || shownIcons_[icon]) return;
  shownIcons_[icon] = true;
  send("iconView", ad_.linear->icons[icon].viewTrackings, macrosNow());
}

std::optional<std::string> VASTTracker::iconClicked(size_t icon) {
  if (icon >= ad_.linear->icons.size()) return std::nullopt;
  const auto macros = macrosNow();
  send("iconClick", ad_.linear->icons[icon].clickTrackings, macros);
  return destination(ad_.linear->icons[icon].clickThrough, macros);
}

void VASTTracker::companionShown(size_t companion) {
  if (companion >= shownCompanions_.size() || shownCompanions_[companion]) return;
  shownCompanions_[companion] = true;
  std::vector<std::string> urls;
  for (const auto& tracking : ad_.companions[companion].trackings)
    if (tracking.event == "creativeView") urls.push_back(tracking.url);
  send("companionView", urls, macrosNow());
}

std::optional<std::string> VASTTracker::companionClicked(size_t companion) {
  if (companion >= ad_.companions.size()) return std::nullopt;
  const auto macros = macrosNow();
  send("companionClick", ad_.companions[companion].clickTrackings, macros);
  return destination(ad_.companions[companion].clickThrough, macros);
}

}  // namespace velto
