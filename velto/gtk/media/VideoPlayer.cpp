// Between a pipeline and the views that show it.
#include "velto/gtk/media/VideoPlayer.h"

#include "velto/gtk/Modules.h"
#include "velto/gtk/network/NetworkGate.h"
#include "velto/gtk/views/PicturePeer.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"

namespace velto::gtk {
namespace {

constexpr int32_t nanosecondScale = 1'000'000'000;

CanPlay playability(const std::string& type, const std::string& codec) {
  const auto ask = moduleFunction<CanPlayVideo>(videoModule, canPlayVideoName);
  return ask ? ask(lowercased(type).c_str(), lowercased(codec).c_str()) : CanPlay::Perhaps;
}

}  // namespace

VideoPlayer::VideoPlayer(const std::shared_ptr<AVPlayerItem>& item)
    : AVPlayer(item), picture_(std::make_shared<Picture>()) {}

VideoPlayer::~VideoPlayer() = default;

void VideoPlayer::load(const std::filesystem::path& caFile, const std::string& proxy) {
  NSError error{"velto", 1, "GStreamer or its base plugins are not there", NSErrorCause::EngineUnavailable};
  const auto make =
      moduleFunction<MakeVideoPipeline>(videoModule, makeVideoPipelineName, &error.localizedDescription);
  const auto orNull = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
  if (make)
    pipeline_.reset(
        make(asset()->url().absoluteString().c_str(), orNull(caFile.native()), orNull(proxy), this));
  if (pipeline_) return;
  Platform::current().mainQueue().post([weak = weak_from_this(), error] {
    if (const auto alive = std::static_pointer_cast<VideoPlayer>(weak.lock())) alive->failed(error);
  });
}

std::unique_ptr<ViewPeer> VideoPlayer::makePicture() {
  return std::make_unique<PicturePeer>(picture_);
}

// --- what the library wants

void VideoPlayer::run(bool playing) {
  if (pipeline_) pipeline_->run(playing);
}

bool VideoPlayer::jump(Nanoseconds position) {
  return pipeline_ && pipeline_->jump(position);
}

void VideoPlayer::applyVolume(float volume) {
  if (pipeline_) pipeline_->setVolume(volume);
}

AVPlayer::Nanoseconds VideoPlayer::position() const {
  return pipeline_ ? pipeline_->position() : Nanoseconds(0);
}

void VideoPlayer::release() {
  pipeline_.reset();
  picture_->set({});
}

// --- what the pipeline tells

void VideoPlayer::pipelineLoaded(std::optional<Nanoseconds> duration) {
  becameReady(duration ? CMTime{duration->count(), nanosecondScale} : CMTime{});
}

void VideoPlayer::pipelineShows(const VideoFrame& frame) {
  picture_->set(GPtr<GdkTexture>::adopt(gdk_memory_texture_new(
      frame.width, frame.height, GDK_MEMORY_B8G8R8A8_PREMULTIPLIED, frame.pixels, frame.stride)));
}

void VideoPlayer::pipelineCarried(double kilobits) {
  Platform::current().media().carried(kilobits);
}

void VideoPlayer::pipelineEnded() {
  reachedEnd();
}

void VideoPlayer::pipelineFailed(const NSError& error) {
  failed(error);
}

std::shared_ptr<AVPlayer> Media::makePlayer(const std::shared_ptr<AVPlayerItem>& item) {
  const auto player = std::make_shared<VideoPlayer>(item);
  player->load(caFile_, gate_->address());
  return player;
}

void Media::prepare(std::function<void()> ready) {
  if (isPrepared_) return MediaSystem::prepare(std::move(ready));
  // This belongs to the main thread, and takes a turn of its own.
  Platform::current().mainQueue().post([gate = gate_] { gate->address(); });
  background_.perform([weak = std::weak_ptr(alive_), this, ready = std::move(ready)] {
    if (const auto prepare = moduleFunction<PrepareVideo>(videoModule, prepareVideoName)) prepare();
    auto* platform = Platform::currentOrNull();
    if (!platform) return;
    platform->mainQueue().post([weak, this, ready] {
      if (weak.lock()) isPrepared_ = true;
      ready();
    });
  });
}

bool Media::canPlay(const std::string& type, const std::string& codec) {
  return playability(type, codec) != CanPlay::No;
}

bool Media::surelyPlays(const std::string& type, const std::string& codec) {
  return playability(type, codec) == CanPlay::Yes;
}

}  // namespace velto::gtk
