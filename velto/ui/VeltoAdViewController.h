// What the working controllers of banners and interstitials share: they hold the ad that is shown now
// (VeltoShownAd.h), pass what the system tells on to it, and answer what it asks. A measurement session, the
// observation of the output volume and a video belong to the controller and outlive a single ad. Main thread.
#pragma once

#include "velto/measurement/UIViewControllerOMSDKSDKVelto.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/timeline/InspectedPlacement.h"
#include "velto/ui/AdPlace.h"
#include "velto/ui/PreparedPage.h"
#include "velto/ui/UIViewControllerCoreSDKVelto.h"
#include "velto/ui/UIViewControllerUIAnimationSDKVelto.h"
#include "velto/ui/UIViewControllerUISDKVelto.h"
#include "velto/ui/VeltoShownAd.h"
#include "velto/video/AVAudioSDKVelto.h"
#include "velto/video/AVVideoSDKVelto.h"

#include <cstdint>
#include <memory>
#include <string>

namespace velto {

class VeltoAdViewController : public UIViewController,
                              public UIViewControllerCoreSDKVelto,
                              public UIViewControllerUISDKVelto,
                              public UIViewControllerUIAnimationSDKVelto,
                              public UIViewControllerOMSDKSDKVelto,
                              public AVAudioSDKVelto,
                              public AVVideoSDKVelto,
                              public AdPlace,
                              public InspectedPlacement {
 public:
  using Why = VeltoAdEndReason;
  ~VeltoAdViewController() override;
  PlacementRecord& placement() { return *placement_; }
  std::shared_ptr<const PlacementRecord> record() const override { return placement_; }
  void reload() override;
  bool simulate(Why reason) override;
  void setAnimation(int64_t animation) { animation_ = animation; }
  std::optional<VeltoAdWeight> adWeight() const { return shown_ ? shown_->weight() : std::nullopt; }
  void _adDidPress();

  // What is shown now, each null or empty without it; for the shown ad, tests and debuggers.
  const std::shared_ptr<VeltoShownAd>& shownAd() const { return shown_; }
  std::shared_ptr<VeltoAd> ad() const { return shown_ ? shown_->ad() : nullptr; }
  std::shared_ptr<WKWebView> webView() const { return shown_ ? shown_->webView() : nullptr; }
  std::shared_ptr<WKWebView> activeWebView() const { return shown_ ? shown_->activeWebView() : nullptr; }
  std::shared_ptr<VeltoCloseButton> veltoCloseButton() const;
  std::shared_ptr<VeltoMRAIDHandler> veltoGetMRAIDHandler() const;
  const NSLayoutConstraints& webViewContraints() const { return webViewContraints_; }

  // --- asked by the shown ad, beside what AdPlace has

  PreparedPage& preparedPage() { return preparedPage_; }
  using AVAudioSDKVelto::activateAudioSession;
  void _expandActionInMainWebView(int64_t action) { _resizeActionInMainWebView(action, {}, {}); }
  void _resizeActionInMainWebView(int64_t action, CGSize size, CGPoint offset);

  // A new value of the output volume, 0 … 1.
  void observeValueForKeyPath(const std::string& keyPath, float newValue, const void* context) override;

  void viewWillAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;
  void viewWillTransitionToSize(CGSize size, UIViewControllerTransitionCoordinator& coordinator) override;
  bool shouldAutorotate() const override;
  uint64_t supportedInterfaceOrientations() const override;

 protected:
  explicit VeltoAdViewController(const char* placement)
      : placement_(std::make_shared<PlacementRecord>(placement)) {}
  UIViewController& viewController() override { return *this; }
  void tellMeasurement(float volume) override { volumePlaybackNativeVideoChangeOMSD(volume); }
  std::shared_ptr<WKWebView> makeWebView(std::weak_ptr<WKNavigationDelegate> delegate) override;
  virtual VeltoControllerDelegate delegate() const = 0;
  void fetchFailed() override;
  void tellState() override;
  virtual int64_t stateNow() const = 0;
  virtual void loadAgain() = 0;
  virtual CGSize adSizeNow() const { return {}; }

  // The host's view controller, taps, and what is observed; called when the object is made.
  void begin(const VeltoControllerDelegate& delegate);
  virtual void takeOff(Why why) = 0;             // everything of the ad ends at once
  std::shared_ptr<VeltoShownAd> letGo(Why why);  // the one that is shown ends; its views stay
  std::shared_ptr<LoadRecord> beginLoad(VeltoAskedBy by) override { return placement_->begin(by); }
  void note(VeltoTimelineKind kind, LoadRecord::Detail detail = {}) override;
  // The error that a page's failure is told with. The load has ended by then.
  VeltoErrorAd endByPage(const NSError& error);
  // The adapter that a notification comes from, if it concerns this controller: it brought the ad that is
  // shown, or an answer is on its way here and nobody has that adapter's ad yet.
  std::shared_ptr<VeltoAdMediationCoreAdapter> ownAdapterIn(const NSNotification& notification) const;

  bool abandoned_ = false;  // nobody holds the public object any more, or the platform went
  int64_t animation_ = 0;
  std::weak_ptr<UIViewController> vc_;  // the host's
  std::shared_ptr<VeltoShownAd> shown_;
  NSLayoutConstraints webViewContraints_;  // in the own view
  uint64_t interfaceOrientationMask_ = UIInterfaceOrientationMaskAll;
  std::string audioContext_;  // its address marks our observation of the volume

 private:
  const std::shared_ptr<PlacementRecord> placement_;
  PreparedPage preparedPage_;
  Handle orientationObserver_, platformObserver_;
  int64_t toldState_ = 0;  // empty
  CGSize toldSize_;
};

}  // namespace velto
