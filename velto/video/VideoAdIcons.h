// The icons of one video ad, such as that of an advertising choices programme: each over the video for its time, at its place.
// Owned by the ad's show; main thread.
#pragma once

#include "velto/video/VideoAdPage.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class VideoAdIcons {
 public:
  struct Actions {
    std::function<void(size_t icon)> shown;
    std::function<std::optional<std::string>(size_t icon)> clicked;
    std::function<void(bool opens)> pressed;
  };

  VideoAdIcons(const std::vector<VASTIcon>& icons, Actions actions);
  VideoAdIcons(const VideoAdIcons&) = delete;
  VideoAdIcons& operator=(const VideoAdIcons&) = delete;
  ~VideoAdIcons() { clear(); }

  // When some come or go, in seconds of the ad.
  std::vector<double> times() const;
  // Those of that time are in the view, at their places.
  void show(double seconds, UIView& over);
  void clear();

 private:
  struct Shown {
    VASTIcon icon;
    size_t place = 0;  // in the document's list
    std::shared_ptr<VideoAdPage> page = {};
    bool isTried = false;
  };

  std::vector<Shown> icons_;
  Actions actions_;
};

}  // namespace velto
