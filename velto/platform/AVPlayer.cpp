// What all players have in common: states, events, boundary times.
#include "velto/platform/AVPlayer.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velto {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr int32_t nanosecondScale = 1'000'000'000;
constexpr auto shortestWait = 10ms;  // while a player waits for data, its position stands still
constexpr auto slack = 1ms;          // as exact as a position is
constexpr auto leastEarly = 100ms;   // what containers and decoders may lack at the end

nanoseconds nanosecondsOf(CMTime time) {
  constexpr double longest = 9e9;  // seconds
  return nanoseconds(std::llround(std::clamp(CMTimeGetSeconds(time), -longest, longest) * nanosecondScale));
}

}  // namespace

struct AVPlayer::Observer {
  std::vector<nanoseconds> times;  // sorted
  std::function<void()> block;
};

std::shared_ptr<AVPlayer> AVPlayer::playerWithPlayerItem(const std::shared_ptr<AVPlayerItem>& item) {
  return Platform::current().media().makePlayer(item);
}

void AVPlayer::play() {
  setPlaying(true);
}
void AVPlayer::pause() {
  setPlaying(false);
}

void AVPlayer::setPlaying(bool playing) {
  if (state_ == State::Over || std::exchange(playing_, playing) == playing) return;
  if (state_ == State::Ready) run(playing);
  scheduleNextBoundary();
  tell(AVPlayerEvent::RateChanged);
}

void AVPlayer::setVolume(float volume) {
  volume_ = std::isfinite(volume) ? std::clamp(volume, 0.0F, 1.0F) : volume_;
  if (state_ != State::Over) applyVolume(volume_);
}

CMTime AVPlayer::currentTime() const {
  if (boundary_) return {boundary_->count(), nanosecondScale};
  return {state_ == State::Loading ? 0 : std::max(position(), nanoseconds(0)).count(), nanosecondScale};
}

void AVPlayer::seekToTime(CMTime time) {
  if (state_ != State::Ready) return;
  const auto end = nanosecondsOf(asset()->duration());
  auto target = std::max(nanosecondsOf(time), nanoseconds(0));
  if (end > 0ns) target = std::min(target, end);
  if (!jump(target)) return;
  passed_ = target;
  scheduleNextBoundary();
}

void AVPlayer::cancel() {
  const auto alive = shared_from_this();
  handler_ = nullptr;
  observers_.clear();
  ++schedule_;
  playing_ = false;
  state_ = State::Over;
  release();
}

// --- told by the platform's player

void AVPlayer::tell(AVPlayerEvent event) {
  const auto alive = shared_from_this();
  const auto handler = handler_;  // which may set another
  if (handler) handler(event);
}

void AVPlayer::becameReady(CMTime duration) {
  if (state_ != State::Loading) return;
  const auto alive = shared_from_this();
  state_ = State::Ready;
  applyVolume(volume_);
  if (playing_) run(true);
  asset()->playerLoaded(duration);
  scheduleNextBoundary();
  tell(AVPlayerEvent::ReadyToPlay);
}

void AVPlayer::reachedEnd() {
  if (state_ != State::Ready) return;
  const auto alive = shared_from_this();
  const auto duration = nanosecondsOf(asset()->duration());
  const auto early = std::max<nanoseconds>(leastEarly, duration / 100);
  passBoundaries(position() + early >= duration ? duration : position());
  if (state_ != State::Ready) return;  // an observer cancelled
  state_ = State::Over;
  playing_ = false;
  tell(AVPlayerEvent::DidPlayToEnd);
}

void AVPlayer::failed(NSError error) {
  if (state_ == State::Over) return;
  const auto alive = shared_from_this();
  error_ = std::move(error);
  state_ = State::Over;
  playing_ = false;
  ++schedule_;
  tell(AVPlayerEvent::FailedToPlay);  // before those who wait for the asset look at what became of it
  asset()->playerLoaded({});
}

// --- boundary times

AVPlayer::Token AVPlayer::addBoundaryTimeObserverForTimes(const std::vector<CMTime>& times,
                                                          std::function<void()> block) {
  auto observer = std::make_shared<Observer>();
  observer->block = std::move(block);
  std::transform(times.begin(), times.end(), std::back_inserter(observer->times), nanosecondsOf);
  std::sort(observer->times.begin(), observer->times.end());
  if (state_ == State::Over) return observer;
  observers_.push_back(observer);
  scheduleNextBoundary();
  return observer;
}

void AVPlayer::removeTimeObserver(const Token& token) {
  std::erase_if(observers_, [&](const auto& observer) { return observer == token; });
}

std::optional<nanoseconds> AVPlayer::nextBoundary() const {
  std::optional<nanoseconds> next;
  for (const auto& observer : observers_) {
    const auto found = std::upper_bound(observer->times.begin(), observer->times.end(), passed_);
    if (found != observer->times.end() && (!next || *found < *next)) next = *found;
  }
  return next;
}

void AVPlayer::scheduleNextBoundary() {
  const auto schedule = ++schedule_;
  const auto next = nextBoundary();
  if (state_ != State::Ready || !playing_ || !next) return;
  const auto wait = std::max<nanoseconds>(*next - position(), shortestWait);
  Platform::current().mainQueue().postAfter(wait, [weak = weak_from_this(), schedule] {
    const auto alive = weak.lock();
    if (!alive || alive->schedule_ != schedule) return;
    alive->passBoundaries(alive->position());
    if (alive->schedule_ == schedule) alive->scheduleNextBoundary();
  });
}

void AVPlayer::passBoundaries(nanoseconds upTo) {
  const auto alive = shared_from_this();
  for (auto next = nextBoundary(); next && *next <= upTo + slack; next = nextBoundary()) {
    passed_ = *next;
    boundary_ = next;
    const auto observers = observers_;
    for (const auto& observer : observers)
      if (std::binary_search(observer->times.begin(), observer->times.end(), *next) &&
          std::find(observers_.begin(), observers_.end(), observer) != observers_.end())
        observer->block();
    boundary_.reset();
    if (passed_ != *next) return;  // a seek from inside
  }
}

}  // namespace velto
