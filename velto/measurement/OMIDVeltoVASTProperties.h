// What is known of a video ad when it has loaded. Main thread.
#pragma once

#include "velto/measurement/OMIDVelto.h"
#include "velto/platform/foundation/JSON.h"

#include <memory>
#include <optional>

namespace velto {

class OMIDVeltoVASTProperties {
 public:
  // An ad that cannot be skipped, and one that can, `offset` seconds after its start.
  static std::shared_ptr<const OMIDVeltoVASTProperties> initWithAutoPlay(bool autoPlay,
                                                                         OMIDVeltoPosition position) {
    return std::shared_ptr<const OMIDVeltoVASTProperties>(
        new OMIDVeltoVASTProperties(std::nullopt, autoPlay, position));
  }
  static std::shared_ptr<const OMIDVeltoVASTProperties> initWithSkipOffset(double offset, bool autoPlay,
                                                                           OMIDVeltoPosition position) {
    return std::shared_ptr<const OMIDVeltoVASTProperties>(
        new OMIDVeltoVASTProperties(offset, autoPlay, position));
  }

  // As the loaded event carries it.
  JSON::Object json() const {
    JSON::Object object{{"skippable", skipOffset_.has_value()}, {"autoPlay", autoPlay_}};
    if (skipOffset_) object["skipOffset"] = *skipOffset_;
    if (const char* name = OMIDVeltoName(position_)) object["position"] = name;
    return object;
  }

 private:
  OMIDVeltoVASTProperties(std::optional<double> skipOffset, bool autoPlay, OMIDVeltoPosition position)
      : skipOffset_(skipOffset), autoPlay_(autoPlay), position_(position) {}

  std::optional<double> skipOffset_;
  bool autoPlay_;
  OMIDVeltoPosition position_;
};

}  // namespace velto
