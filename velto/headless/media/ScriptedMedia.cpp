// Playing by the virtual clock.
#include "velto/headless/media/ScriptedMedia.h"

#include "velto/headless/VirtualQueue.h"
#include "velto/headless/views/RecordingViews.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velto::headless {
namespace {

using std::chrono::nanoseconds;

nanoseconds inNanoseconds(double seconds) {
  return nanoseconds(std::llround(seconds * 1e9));
}

}  // namespace

ScriptedMedia::ScriptedMedia(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}

std::shared_ptr<AVPlayer> ScriptedMedia::makePlayer(const std::shared_ptr<AVPlayerItem>& item) {
  queue_->requireMain("MediaSystem::makePlayer");
  const auto script = scripts_.find(item->asset->url().absoluteString());
  auto chosen = script == scripts_.end() ? VideoScript{} : script->second;
  chosen.hasPlayer = chosen.hasPlayer && hasPlayer;
  auto player = std::make_shared<ScriptedPlayer>(queue_, item, chosen);
  players_->push_back(player.get());
  player->registration_ = Handle([list = players_, own = player.get()] { std::erase(*list, own); });
  player->load();
  return player;
}

void ScriptedMedia::prepare(std::function<void()> ready) {
  queue_->requireMain("MediaSystem::prepare");
  queue_->postAfter(preparesAfter, std::move(ready));
}

ScriptedPlayer::ScriptedPlayer(std::shared_ptr<VirtualQueue> queue, const std::shared_ptr<AVPlayerItem>& item,
                               const VideoScript& script)
    : AVPlayer(item), queue_(std::move(queue)), script_(script) {}

void ScriptedPlayer::load() {
  if (!script_.loads) return;
  queue_->postAfter(script_.loadsAfter, [this, weak = weak_from_this()] {
    const auto alive = weak.lock();
    if (!alive || released_) return;
    if (!script_.hasPlayer)
      return failed({"headless", -3, "nothing plays files", NSErrorCause::EngineUnavailable});
    if (script_.loadFails)
      return failed({"headless", 404, "the video cannot be loaded", NSErrorCause::NotFound});
    script_.isNoVideo ? failed({"headless", -2, "nothing decodes it"}) : becameReady(script_.duration);
  });
}

std::unique_ptr<ViewPeer> ScriptedPlayer::makePicture() {
  return std::make_unique<RecordingViewPeer>(queue_);
}

nanoseconds ScriptedPlayer::position() const {
  if (!since_) return from_;
  const auto at = from_ + inNanoseconds(queue_->monotonicSeconds() - *since_);
  if (!script_.stallsAt || from_ > *script_.stallsAt || at <= *script_.stallsAt) return at;
  return std::max(*script_.stallsAt, at - script_.stallsFor);
}

void ScriptedPlayer::run(bool playing) {
  from_ = position();
  since_ = playing ? std::optional(queue_->monotonicSeconds()) : std::nullopt;
  scheduleStop();
}

bool ScriptedPlayer::jump(Nanoseconds position) {
  from_ = position;
  if (since_) since_ = queue_->monotonicSeconds();
  scheduleStop();
  return true;
}

void ScriptedPlayer::scheduleStop() {
  const auto stop = ++stop_;
  if (!since_) return;
  auto end = script_.endsAt;
  if (!end && script_.duration.timescale > 0) end = inNanoseconds(CMTimeGetSeconds(script_.duration));
  const bool fails = script_.failsAt && (!end || *script_.failsAt <= *end);
  if (fails) end = script_.failsAt;
  if (!end) return;
  auto wait = *end - position();
  if (script_.stallsAt && from_ <= *script_.stallsAt && *script_.stallsAt < *end) wait += script_.stallsFor;
  queue_->postAfter(wait, [this, weak = weak_from_this(), stop, end, fails] {
    const auto alive = weak.lock();
    if (!alive || stop_ != stop) return;
    from_ = *end;
    since_.reset();
    fails ? failed({"headless", -1, "the video breaks off"}) : reachedEnd();
  });
}

void ScriptedPlayer::release() {
  from_ = position();
  since_.reset();
  ++stop_;
  released_ = true;
}

}  // namespace velto::headless
