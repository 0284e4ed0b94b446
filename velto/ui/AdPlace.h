// What a shown ad asks of the controller that shows it: where it stands, and what its events mean there. Implemented by
// the two working controllers; main thread.
#pragma once

#include "velto/core/VeltoConstants.h"
#include "velto/platform/Geometry.h"
#include "velto/timeline/VeltoAdEndReason.h"
#include "velto/timeline/VeltoAdWeight.h"

#include <cstdint>
#include <memory>

namespace velto {

struct NSError;
class UIView;
class UIViewController;
class WKWebView;

class AdPlace {
 public:
  virtual ~AdPlace() = default;

  // What the full-screen frame is taken from; both may be null.
  struct Surroundings {
    std::shared_ptr<UIView> viewAd;
    std::shared_ptr<UIViewController> vc;
  };
  virtual Surroundings surroundings() = 0;

  // Moves and sizes the page, and where it has one its place.
  enum ExpandOrResize : int64_t { Expand = 0, CloseExpand = 1, Resize = 2, CloseResize = 3 };
  virtual void _expandOrResizeMainWebView(int64_t action, CGSize size, CGPoint offset) = 0;
  virtual std::shared_ptr<WKWebView> _initSecondMRAIDWebView() = 0;  // over all of the first

  virtual void pageInjected() {}
  virtual void pageLoaded() {}
  virtual void pageFailed(const NSError& error) = 0;
  virtual void adapterClosed() = 0;
  virtual void leave(VeltoAdEndReason why) = 0;   // the ad is to go from the screen
  virtual void replaceHeavyAd() = 0;              // and be ready for the next
  virtual bool endsWithItsExpansion() const = 0;  // to close the expanded page is to leave
  // Its plain pages may live in one with those of other places.
  virtual bool sharesProcess() const { return false; }
  virtual void closeButtonRemoved() {}  // the page's, or the screen's own at its wish

  // What becomes of an ad that costs too much. The limits are those of the next ad.
  void setHeavyAdPolicy(VeltoHeavyAdPolicy policy) { heavyAdPolicy_ = policy; }
  VeltoHeavyAdPolicy heavyAdPolicy() const { return heavyAdPolicy_; }
  void setHeavyAdLimits(const VeltoHeavyAdLimits& limits) { heavyAdLimits_ = limits; }
  const VeltoHeavyAdLimits& heavyAdLimits() const { return heavyAdLimits_; }

 private:
  VeltoHeavyAdPolicy heavyAdPolicy_ = VeltoHeavyAdPolicyReport;
  VeltoHeavyAdLimits heavyAdLimits_;
};

}  // namespace velto
