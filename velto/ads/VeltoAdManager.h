// Where the controllers get their ads: from the list of ads fetched earlier, else from the server. One for
// the process.
#pragma once

#include "velto/ads/VeltoAdResolver.h"
#include "velto/core/VeltoConstants.h"
#include "velto/core/VeltoSettings.h"
#include "velto/platform/NSNotificationCenter.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// Posted, with the ad as its object, when an ad is shown: its markup was handed to a web view, or its
// adapter's view or screen is there.
inline constexpr char constNotificationAdShowed[] = "constNotificationAdShowedVelto";

class VeltoAdManager : public std::enable_shared_from_this<VeltoAdManager> {
 public:
  static std::shared_ptr<VeltoAdManager> shared();

  // The completion (may be empty) is called on the main queue, never inside this call. It is not called when
  // the resolution of the answer ends without one.
  static void fetchFor(VeltoAdType type, VeltoBannerSize size, const std::optional<VeltoSettings>& settings,
                       VeltoAdCompletion completionHandler);
  // The second creative of a two-part expand. As above; the ad is of no size, and not kept in the list.
  static void fetchForSecondaryMRAIDContent(const std::string& url, VeltoAdCompletion completionHandler);
  // Fetches an image and adds it to the user's pictures if access was granted before. The completion (may be
  // empty) is called on the main queue: whether it was added.
  static void fetchForMRAIDImageContent(const std::string& url, std::function<void(bool)> completionHandler);

  // The measurement engine's service script, of the shared manager; nothing while the engine is not active
  // or when the library's resources have none. Main thread.
  static std::optional<std::string> getOMSKJs() { return shared()->getOMSDK(); }
  std::optional<std::string> getOMSDK();

  VeltoAdManager();

  void _fetch(VeltoAdType type, VeltoBannerSize size, const std::optional<VeltoSettings>& settings,
              VeltoAdCompletion completionHandler);
  void fetchSecondaryMRAIDContent(const std::string& url, VeltoAdCompletion completionHandler);
  void fetchMRAIDImageContent(const std::string& url, std::function<void(bool)> completionHandler);
  void _addAdInCache(const std::shared_ptr<VeltoAd>& ad);
  void _veltoNotificationAdShowed(const NSNotification& notification);

  // Ads fetched and not shown yet, oldest first. Added to on the transport thread, hence a copy.
  std::vector<std::shared_ptr<VeltoAd>> ads() const;

 private:
  std::shared_ptr<VeltoAd> usableAd(VeltoBannerSize size) const;

  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<VeltoAd>> ads_;
  std::optional<std::string> omsdkJs_;
  Handle shownObserver_;
};

}  // namespace velto
