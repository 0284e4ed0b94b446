// The host application of the headless platform: URLs that
// it opens are recorded, and nothing leaves the process.
#pragma once

#include "velto/Export.h"
#include "velto/platform/UIApplication.h"

#include <memory>
#include <set>
#include <vector>

namespace velto::headless {

class VirtualQueue;

class VELTO_EXPORT ScriptedApplication : public UIApplication {
 public:
  struct OpenedURL {
    NSURL url;
    std::map<std::string, std::string> options;
  };

  explicit ScriptedApplication(std::shared_ptr<VirtualQueue> queue);

  std::set<std::string> schemes{"http", "https"};  // what some application on the device opens, in lower case
  std::vector<OpenedURL> opened;  // every URL that was to be opened, in order, also those nobody opens
  bool reduceTransparency = false;
  double scaleOfText = 1;
  int rotationAttempts = 0;

  // The person leaves the application, and comes back.
  void enterBackground();
  void enterForeground();
  void setLocked(bool locked);

  using UIApplication::openURL;
  bool canOpenURL(const NSURL& url) const override;
  void openURL(const NSURL& url, const std::map<std::string, std::string>& options,
               std::function<void(bool opened)> completion) override;
  bool isProtectedDataAvailable() const override { return !locked_; }
  bool isReduceTransparencyEnabled() const override { return reduceTransparency; }
  double textScale() const override { return scaleOfText; }
  void attemptRotationToDeviceOrientation() override { ++rotationAttempts; }

 private:
  bool locked_ = false;
  std::shared_ptr<VirtualQueue> queue_;
};

}  // namespace velto::headless
