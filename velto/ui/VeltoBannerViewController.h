// A banner: what a host application creates to show ads inside one of its own views. Main thread.
//
//   auto banner = VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50,
//                                                             VeltoBannerPositionBottom);
//   banner->setEnableAutoRefresh(true);
//   banner->load();
//
// The delegate (VeltoDelegates.h) is held weakly. Destroying this object removes the banner.
#pragma once

#include "velto/Export.h"
#include "velto/core/VeltoConstants.h"
#include "velto/core/VeltoSettings.h"
#include "velto/platform/Geometry.h"
#include "velto/timeline/VeltoAdTimeline.h"
#include "velto/ui/VeltoDelegates.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class UIView;

class VELTO_EXPORT VeltoBannerViewController {
 public:
  using Delegate = std::shared_ptr<VeltoBannerViewControllerDelegate>;

  // In the view of the delegate's view controller: at a position, or with its top left corner at a point.
  static std::shared_ptr<VeltoBannerViewController> initWithDelegate(const Delegate& delegate,
                                                                     VeltoBannerSize andSize,
                                                                     VeltoBannerPosition andPosition);
  static std::shared_ptr<VeltoBannerViewController> initWithDelegate(const Delegate& delegate,
                                                                     VeltoBannerSize andSize,
                                                                     CGPoint andLocation);
  // In another view of that controller: at its top, or at a point. A view elsewhere, or one
  // that has gone, makes every load fail.
  static std::shared_ptr<VeltoBannerViewController> initWithDelegate(const Delegate& delegate,
                                                                     VeltoBannerSize andSize,
                                                                     const std::shared_ptr<UIView>& andView);
  static std::shared_ptr<VeltoBannerViewController> initWithDelegate(const Delegate& delegate,
                                                                     VeltoBannerSize andSize,
                                                                     const std::shared_ptr<UIView>& andView,
                                                                     CGPoint andLocation);

  explicit VeltoBannerViewController(std::shared_ptr<VeltoBannerViewControllerPrivate> vc)
      : vc_(std::move(vc)) {}
  VeltoBannerViewController(const VeltoBannerViewController&) = delete;
  VeltoBannerViewController& operator=(const VeltoBannerViewController&) = delete;
  ~VeltoBannerViewController();

  // Fetches and shows an ad, in place of the one that is shown. The delegate hears of success or failure.
  void load();
  void load(const VeltoSettings& settings);
  // Takes the banner off the screen, in the next turn of the main queue, and ends its refreshing. An ad that
  // is on its way by then is shown all the same; to get rid of that, too, let go of this object. A load that
  // is called afterwards, and be it in the same turn, begins anew.
  void removeBanner();

  // While it is on no refresh begins, such as for a banner that nobody sees. One that came due meanwhile
  // begins when it is over. Loads are not held back.
  void setRefreshPaused(bool paused);

  // What became of its last loads, oldest first (VeltoAdTimeline.h).
  std::vector<VeltoAdTimeline> veltoAdTimeline() const;
  void addTimelineObserver(std::weak_ptr<VeltoAdTimelineObserver> observer);
  // What timelines, logs and figures call it, of loads to come: "banner" unless said.
  void setPlacement(const std::string& name);

  // What becomes of ads that cost the device too much, from the next one on (VeltoAdWeight.h): they are reported
  // unless said.
  void setHeavyAdPolicy(VeltoHeavyAdPolicy policy);
  void setHeavyAdLimits(const VeltoHeavyAdLimits& limits);
  // What the ad that is shown has cost by now; nothing without one, or where it cannot be told.
  std::optional<VeltoAdWeight> adWeight() const;

  VeltoBannerState state() const;
  CGSize adSize() const;  // points, as the server said; zero while none is shown

  // Take effect at the next load. Seconds from the start of one load to that of the next; below 1 there is
  // no refreshing.
  void setRefreshTimeSeconds(int64_t seconds);  // 30 by default
  void setSize(VeltoBannerSize size);
  void setEnableAutoRefresh(bool enable);       // off by default
  void setAnimation(VeltoAnimation animation);  // how the first ad comes in; none by default

  // The working controller, which delegate calls give as their first argument.
  const std::shared_ptr<VeltoBannerViewControllerPrivate>& vc() const { return vc_; }

 private:
  std::shared_ptr<VeltoBannerViewControllerPrivate> vc_;
};

}  // namespace velto
