// The host application of the headless platform: URLs that
// it opens are recorded, and nothing leaves the process.
#pragma once

#include "velto/Export.h"
#include "velto/platform/UIApplication.h"

#include <memory>
#include <set>
#include <utility>
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
  std::vector<OpenedURL> opened;   // every URL that was to be opened, in order, also those nobody opens
  std::vector<OpenedURL> refused;  // what pages wanted to open untouched
  bool reduceTransparency = false;
  double scaleOfText = 1;
  int rotationAttempts = 0;

  // The person leaves the application, and comes back.
  void enterBackground();
  void enterForeground();
  void setLocked(bool locked);
  // While true, what a page asks for is only opened, or stored, within two seconds after a person touched it.
  void setPagesNeedTouch(bool need) { pagesNeedTouch_ = need; }
  bool mayActForPage() const override { return !pagesNeedTouch_ || !*untouchedPage_; }

  // For web views: while one lives, what is opened is opened for a page.
  class PageActs {
   public:
    PageActs(const ScriptedApplication& application, bool isTouched)
        : untouched_(application.untouchedPage_), before_(std::exchange(*untouched_, !isTouched)) {}
    PageActs(const PageActs&) = delete;
    PageActs& operator=(const PageActs&) = delete;
    ~PageActs() { *untouched_ = before_; }

   private:
    const std::shared_ptr<bool> untouched_;  // the application may go meanwhile
    const bool before_;
  };

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
  bool pagesNeedTouch_ = false;
  std::shared_ptr<bool> untouchedPage_ = std::make_shared<bool>(false);  // acts at the moment
  std::shared_ptr<VirtualQueue> queue_;
};

}  // namespace velto::headless
