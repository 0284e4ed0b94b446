// See VideoAds.h.
#include "VideoAds.h"

#include <chrono>

namespace demo {
namespace {

constexpr std::chrono::seconds adPatience{100};  // for a machine that is busy
constexpr char address[] = "https://ads.velto.example/video-ad.xml";

}  // namespace

// A video ad and its delegate.
class VideoAds::Delegate : public velto::VeltoVideoAdDelegate {
 public:
  using Ad = velto::VeltoVideoAd;

  explicit Delegate(const VideoAds& all) : host_(all.host_), heard_(all.heard_) {}

  std::shared_ptr<Ad> ad;

 private:
  void veltoVideoAdDidLoad(Ad& loaded) override {
    hear("loaded");
    if (!loaded.playOver(host_)) hear("no window");
  }
  void veltoVideoAdDidFail(Ad&, const velto::VeltoVideoAdError& error) override {
    hear("failed " + std::to_string(error.code));
  }
  void veltoVideoAdDidStart(Ad&, const velto::VeltoVideoAdInfo& info) override {
    hear("started: " + info.title);
  }
  void veltoVideoAdDidPass(Ad&, velto::VeltoVideoAdQuartile quartile) override {
    hear(std::to_string(static_cast<int>(quartile) + 1) + " of 4");
  }
  void veltoVideoAdDidPause(Ad&) override { hear("paused"); }
  void veltoVideoAdDidResume(Ad&) override { hear("resumed"); }
  void veltoVideoAdDidPress(Ad&) override { hear("pressed"); }
  void veltoVideoAdDidSkip(Ad&) override { hear("skipped"); }
  void veltoVideoAdDidComplete(Ad&) override { hear("completed"); }
  void veltoVideoAdDidEndAll(Ad&) override { hear("ended"); }

  void hear(const std::string& what) const { heard_(name, what); }

  const std::shared_ptr<velto::UIViewController> host_;
  const Heard heard_;
};

void VideoAds::open() {
  clear();
  current_ = std::make_shared<Delegate>(*this);
  current_->ad = velto::VeltoVideoAd::make(current_);
  velto::VeltoVideoAdSettings settings;
  settings.answerTimeout = settings.loadTimeout = settings.fileTimeout = adPatience;
  current_->ad->setSettings(settings);
  current_->ad->load(address);
}

double VideoAds::seconds() const {
  return current_ ? current_->ad->currentTime() : 0;
}

}  // namespace demo
