// The measurement session of a controller that shows ads, and what is reported to it. A mixin of the working
// controllers and of the video player's screen; main thread. All failures are silent: without engine, service
// script or session each operation does nothing.
#pragma once

#include "velto/measurement/OMIDVelto.h"
#include "velto/timeline/VeltoTimelineEntry.h"

#include <memory>

namespace velto {

class OMIDVeltoAdEvents;
class OMIDVeltoAdSession;
class OMIDVeltoAdSessionConfiguration;
class OMIDVeltoAdSessionContext;
class OMIDVeltoMediaEvents;
class OMIDVeltoPartner;
class UIView;
class UIViewController;

class UIViewControllerOMSDKSDKVelto {
 public:
  using View = std::shared_ptr<UIView>;

  virtual ~UIViewControllerOMSDKSDKVelto();

  // Of an ad in a web view, of another network's ad, of a video. With a
  // session already there the first two only make the view its main ad view
  // (where one is given) and its obstruction friendly; a view may be null.
  void startOMSDKSessionFor(const View& adView, const View& friendlyObstructionView);
  void startOMSDKSessionForNativeWithFriendlyObstructionView(const View& view);
  void startOMSDKSessionForNativeVideo();
  void finishOMSDKSession();

  // Views over the ad that close it, and so do not count as covering it.
  void addFriendlyObstructionOMSDKFor(const View& view);
  void removeFriendlyObstructionOMSDKFor(const View& view);

  // An expand or resize is under way, or over.
  void expectChangeOMSDK();

  void impressionOMSDK();
  // The impression, and the start of a video of that duration (seconds).
  void startPlaybackNativeVideoOMSDWith(float duration, float volume);
  // How much has been played (0 … 1): a quartile is reported when this lies within a hundredth of it.
  void signalPlaybackNativeVideoOMSDK(float progress);
  void volumePlaybackNativeVideoChangeOMSD(float volume);  // 0 … 1

  // For tests and tools.
  const std::shared_ptr<OMIDVeltoAdSession>& omidSession() const { return omidSession_; }

 protected:
  virtual UIViewController& viewController() = 0;
  // For the ad's timeline.
  virtual void note(VeltoTimelineKind /*kind*/, VeltoTimelineEntry::Detail /*detail*/) {}

 private:
  void _startOMSDKSessionFor(const View& adView, const View& friendlyObstructionView,
                             OMIDVeltoCreativeType creativeType, OMIDVeltoImpressionType impressionType,
                             OMIDVeltoOwner impressionOwner, OMIDVeltoOwner mediaEventsOwner,
                             bool isolateVerificationScripts);
  void _createOmidSessionFor(const View& adView, OMIDVeltoCreativeType creativeType,
                             OMIDVeltoImpressionType impressionType, OMIDVeltoOwner impressionOwner,
                             OMIDVeltoOwner mediaEventsOwner, bool isolateVerificationScripts);
  static std::shared_ptr<const OMIDVeltoPartner> _createPartner();
  static std::shared_ptr<const OMIDVeltoAdSessionContext> _createContextFor(const View& adView);
  static std::shared_ptr<const OMIDVeltoAdSessionConfiguration> _createConfigurationFor(
      OMIDVeltoCreativeType creativeType, OMIDVeltoImpressionType impressionType,
      OMIDVeltoOwner impressionOwner, OMIDVeltoOwner mediaEventsOwner, bool isolateVerificationScripts);
  void _createSessionFor(const std::shared_ptr<const OMIDVeltoAdSessionContext>& context,
                         const std::shared_ptr<const OMIDVeltoAdSessionConfiguration>& config,
                         const View& adView);
  void _createOmidAdEvent();
  void _createOmidMediaEvent();

  std::shared_ptr<OMIDVeltoAdSession> omidSession_;
  std::shared_ptr<OMIDVeltoAdEvents> adEvents_;
  std::shared_ptr<OMIDVeltoMediaEvents> mediaEvents_;
};

}  // namespace velto
