// The demo's video ad, over all of the window. The stage makes it and hears from it what the delegate hears. Main thread.
#pragma once

#include <velto/video/VeltoVideoAd.h>

#include <functional>
#include <memory>
#include <string>

namespace demo {

class VideoAds {
 public:
  using Heard = std::function<void(const std::string& name, const std::string& what)>;
  static constexpr const char* name = "video ad";

  VideoAds(std::shared_ptr<velto::UIViewController> host, Heard heard)
      : host_(std::move(host)), heard_(std::move(heard)) {}

  // Loads the ad, and plays it when it is ready. One that is still there is taken off.
  void open();
  void clear() { current_.reset(); }
  double seconds() const;  // that have been played

 private:
  class Delegate;
  const std::shared_ptr<velto::UIViewController> host_;
  const Heard heard_;
  std::shared_ptr<Delegate> current_;
};

}  // namespace demo
