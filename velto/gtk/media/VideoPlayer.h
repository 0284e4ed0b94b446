// The player of the Linux platform: puts the pictures of a pipeline (modules/VideoPipeline.h) into views. The
// pipeline's module is opened with the first player. Main thread.
#pragma once

#include "velto/gtk/Background.h"
#include "velto/gtk/modules/VideoPipeline.h"
#include "velto/platform/AVPlayer.h"
#include "velto/platform/foundation/GMemory.h"

#include <filesystem>
#include <memory>
#include <string>

namespace velto::gtk {

class NetworkGate;
class Picture;

class VideoPlayer final : public AVPlayer, private VideoPipelineEvents {
 public:
  explicit VideoPlayer(const std::shared_ptr<AVPlayerItem>& item);
  ~VideoPlayer() override;

  void load(const std::filesystem::path& caFile, const std::string& proxy);  // once
  std::unique_ptr<ViewPeer> makePicture() override;

 protected:
  using AVPlayer::Nanoseconds;
  void run(bool playing) override;
  bool jump(Nanoseconds position) override;
  void applyVolume(float volume) override;
  Nanoseconds position() const override;
  void release() override;

 private:
  void pipelineLoaded(std::optional<Nanoseconds> duration) override;
  void pipelineShows(const VideoFrame& frame) override;
  void pipelineCarried(double kilobits) override;
  void pipelineEnded() override;
  void pipelineFailed(const NSError& error) override;

  std::unique_ptr<VideoPipeline> pipeline_;
  std::shared_ptr<Picture> picture_;
};

class Media final : public MediaSystem {
 public:
  // Videos come through `gate`.
  Media(std::filesystem::path caFile, std::shared_ptr<NetworkGate> gate)
      : caFile_(std::move(caFile)), gate_(std::move(gate)) {}
  // Waits for what prepare() is doing: on a machine's first time that can be some seconds, while GStreamer looks at its plug-ins.
  ~Media() override { background_.stop(); }
  std::shared_ptr<AVPlayer> makePlayer(const std::shared_ptr<AVPlayerItem>& item) override;
  void prepare(std::function<void()> ready) override;
  bool canPlay(const std::string& type, const std::string& codec) override;
  bool surelyPlays(const std::string& type, const std::string& codec) override;

 private:
  std::filesystem::path caFile_;
  std::shared_ptr<NetworkGate> gate_;
  bool isPrepared_ = false;
  const std::shared_ptr<int> alive_ = std::make_shared<int>();  // as long as this
  Background background_;  // the first time of all may take seconds, for which other work does not wait
};

}  // namespace velto::gtk
