// What stands behind a video ad: its values and the ad.
#pragma once

#include <array>
#include <vector>

#include "velto-ground-private.h"
#include "velto-waiting.h"

namespace velto_glib {

enum VideoAdProperty : guint {
  // Texts, numbers, switches: values of the next load.
  VideoAdContentUrl = 1,
  VideoAdContentId,
  VideoAdRegulations,
  VideoAdMostWrappers,
  VideoAdAnswerTimeout,
  VideoAdLoadTimeout,
  VideoAdFileTimeout,
  VideoAdMaxDuration,
  VideoAdBandwidth,
  VideoAdStartsMuted,
  VideoAdShowControls,
  VideoAdSecureFilesOnly,
  // The rest.
  VideoAdPosition,
  VideoAdRefusedVendors,
  VideoAdVolume,
  VideoAdFullscreen,
  VideoAdMuted,
  VideoAdState,
  VideoAdInfo,
  VideoAdProperties
};
enum class VideoAdSignal {
  Loaded,
  Failed,
  ContentPause,
  ContentResume,
  Started,
  Quartile,
  Paused,
  Resumed,
  Pressed,
  Skipped,
  Completed,
  Ended,
  Count
};

// What the ad tells. It may live longer than the object by a call that is on its way.
class VideoAdDelegate;

struct VideoAdPrivate {
  using Numbers = std::array<guint, VideoAdProperties>;

  explicit VideoAdPrivate(VeltoVideoAd* ad);
  ~VideoAdPrivate();

  std::shared_ptr<VideoAdDelegate> delegate;  // null once it is disposed of
  std::shared_ptr<velto::VeltoVideoAd> ad;    // null until the first load
  std::array<std::optional<std::string>, VideoAdProperties> texts;
  Numbers numbers;  // switches and choices, too
  char** refusedVendors = nullptr;
  double volume = 1;
  VeltoVideoAdState state = VELTO_VIDEO_AD_STATE_EMPTY;
  VeltoVideoAdInfo* info = nullptr;    // of the ad that plays
  std::vector<GtkWidget*> companions;  // as far as somebody asked for them
  size_t companionsOf = 0;             // the number of the ad that has them, which has started; 0: none has
  std::function<void()> next;          // the load that waits for the end of what plays
  bool wantsAd = false;                // load() was called, and has no outcome yet
  velto::Handle platformGoes;          // who is told of that
  guint givingUp = 0;                  // the source that tells it on
  Waiting loading;
};

// velto-video-ad.cpp
VideoAdPrivate& privateOf(VeltoVideoAd* ad);
void emitVideoAd(VeltoVideoAd* ad, VideoAdSignal signal, gpointer with = nullptr);
// velto-video-ad-properties.cpp
void addVideoAdProperties(GObjectClass* klass);
VideoAdPrivate::Numbers videoAdDefaults();
void notifyVideoAd(VeltoVideoAd* ad, VideoAdProperty property);
// velto-video-ad-load.cpp
velto::VeltoVideoAdSettings settingsOf(const VideoAdPrivate& priv);
GError* videoAdGone();                                           // for who waits for what was given up
void takeVideoAdState(VeltoVideoAd* ad);                         // and whether it is muted
void takeVideoAdInfo(VeltoVideoAd* ad, VeltoVideoAdInfo* info);  // takes the reference over; may be null
void letVideoAdGo(VeltoVideoAd* ad);
// velto-video-ad-info.cpp
std::string validText(const std::string& text);
VeltoVideoAdInfo* videoAdInfoFrom(velto::VeltoVideoAdInfo info);
// velto-video-ad-companion.cpp
// Whether that ad of a pod is the one whose companions are to be had: after it none has begun.
bool isLatest(const velto::VeltoVideoAd& ad, size_t number);
GtkWidget* makeCompanion(std::weak_ptr<velto::VeltoVideoAd> ad, size_t number, size_t place,
                         velto::VeltoVideoAdCompanion companion);
void letCompanionGo(GtkWidget* companion);  // its ad is over: it takes no room any more

}  // namespace velto_glib
