// The measurement engine as a whole: until it is activated, nothing else of it works. One for the process;
// main thread.
#pragma once

#include "velto/platform/Handle.h"

#include <memory>
#include <string>

namespace velto {

class OMIDVeltoSDK {
 public:
  static std::shared_ptr<OMIDVeltoSDK> sharedInstance();
  static std::string versionString();

  // Whether it is active afterwards, which it is.
  bool activate();
  bool isActive() const { return active_; }

  // Nobody can see the application.
  bool isInBackground() const { return inBackground_; }
  // The volume of the device's output, from 0 to 1, which media events carry; 1 until somebody tells.
  double deviceVolume() const { return deviceVolume_; }
  void setDeviceVolume(double volume) { deviceVolume_ = volume; }

 private:
  bool active_ = false;
  bool inBackground_ = false;
  double deviceVolume_ = 1;
  Handle foreground_;
  Handle background_;
};

}  // namespace velto
