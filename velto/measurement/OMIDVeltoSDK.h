// The measurement engine as a whole: until it is activated, nothing else of it works. One for the process.
// Main thread, but for activation: a key may be registered on any.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/platform/foundation/JSON.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace velto {

class OMIDVeltoSDK {
 public:
  static std::shared_ptr<OMIDVeltoSDK> sharedInstance();
  static std::string versionString();

  // Whether it is active afterwards, which it is. These two on any thread.
  bool activate();
  bool isActive() const { return active_; }

  // Nobody can see the application.
  bool isInBackground() const { return inBackground_; }
  static bool isDeviceLocked();
  // The volume of the device's output now, from 0 to 1, which media events carry.
  double deviceVolume() const;

  // For tools: hears the events of all sessions that start from now on, as verification scripts do. What a
  // page reports by itself comes with the next thing that the application tells it.
  using Tracer = std::function<void(const JSON& event)>;
  void setTracer(Tracer tracer) { tracer_ = std::move(tracer); }
  const Tracer& tracer() const { return tracer_; }

 private:
  std::atomic<bool> active_ = false;
  bool inBackground_ = false;
  Tracer tracer_;
  Handle foreground_;
  Handle background_;
  Handle locked_;
  Handle unlocked_;
};

}  // namespace velto
