// A controller with just the video and the volume mixin, which writes down what they tell.
#pragma once

#include "velto/video/AVAudioSDKVelto.h"
#include "velto/video/AVVideoSDKVelto.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace velto::test {

using Lines = std::vector<std::string>;

inline std::string shortText(float number) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", static_cast<double>(number));
  return text;
}

class RecordingHost : public UIViewController, public AVVideoSDKVelto, public AVAudioSDKVelto {
 public:
  ~RecordingHost() override { closeVideo(); }
  void observeValueForKeyPath(const std::string& keyPath, float newValue, const void* context) override {
    told.push_back(keyPath + " " + shortText(newValue));
    lastContext = context;
  }
  Lines told;
  const void* lastContext = nullptr;
  std::function<void()> onProgress;

 protected:
  UIViewController& viewController() override { return *this; }
  void tellStart(AVPlayerViewController& screen, float duration, float volume) override {
    told.push_back("start " + shortText(duration) + " at " + shortText(volume));
    AVVideoSDKVelto::tellStart(screen, duration, volume);
  }
  void tellProgress(AVPlayerViewController& screen, float progress) override {
    told.push_back(shortText(progress));
    AVVideoSDKVelto::tellProgress(screen, progress);
    if (onProgress) onProgress();
  }
  void tellPage(const std::shared_ptr<WKWebView>&, float volume) override {
    told.push_back("page " + shortText(volume));
  }
  void tellMeasurement(float volume) override { told.push_back("measurement " + shortText(volume)); }
};

}  // namespace velto::test
