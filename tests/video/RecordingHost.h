// A controller with just the video and the volume mixin, which writes down what they tell.
#pragma once

#include "velto/core/VeltoInspector.h"
#include "velto/video/AVAudioSDKVelto.h"
#include "velto/video/AVVideoSDKVelto.h"

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace velto::test {

using Lines = std::vector<std::string>;

inline std::string shortText(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

class RecordingHost : public UIViewController,
                      public AVVideoSDKVelto,
                      public AVAudioSDKVelto,
                      public VeltoInspector {
 public:
  RecordingHost() { VeltoInspector::install(this); }
  ~RecordingHost() override {
    closeVideo();
    VeltoInspector::install(nullptr);
  }
  void observeValueForKeyPath(const std::string& keyPath, float newValue, const void* context) override {
    told.push_back(keyPath + " " + shortText(newValue));
    lastContext = context;
  }
  void inspect(const std::string& event, JSON::Object details) override {
    const auto number = [&](const char* name) { return shortText(details.at(name).number().value()); };
    if (event == "statement" && details.at("text").string()->find("audioVolumeChange") != std::string::npos)
      told.push_back("page");
    if (event != "video") return;
    if (details.contains("start"))
      return told.push_back("start " + number("start") + " at " + number("volume"));
    told.push_back(number("progress"));
    if (onProgress) onProgress();
  }
  Lines told;
  const void* lastContext = nullptr;
  std::function<void()> onProgress;

 protected:
  UIViewController& viewController() override { return *this; }
  void tellMeasurement(float volume) override { told.push_back("measurement " + shortText(volume)); }
};

}  // namespace velto::test
