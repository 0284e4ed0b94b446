// What stands behind a banner: its values, the slot that the ad stands in, and the ad.
#pragma once

#include "velto-ground-private.h"
#include "velto-waiting.h"

namespace velto_glib {

// What the ad tells. It may live longer than the banner by a request that is on its way.
class BannerDelegate;

struct BannerPrivate {
  explicit BannerPrivate(VeltoBanner* banner);
  ~BannerPrivate();

  GtkWidget* slot = nullptr;  // the child; null once it is disposed of
  std::shared_ptr<BannerDelegate> delegate;
  std::shared_ptr<velto::VeltoBannerViewController> ad;  // null until the first load
  VeltoBannerSize size = VELTO_BANNER_SIZE_BANNER;
  gboolean autoLoad = FALSE;
  gboolean autoRefresh = FALSE;
  guint refreshInterval = 30;  // seconds
  VeltoAnimation animation = VELTO_ANIMATION_NONE;
  VeltoHeavyAdPolicy heavyAdPolicy = VELTO_HEAVY_AD_POLICY_REPORT;
  gboolean collapse = TRUE;
  VeltoTargeting* targeting = nullptr;
  std::optional<std::string> placement;
  VeltoBannerState state = VELTO_BANNER_STATE_EMPTY;
  int adWidth = 0;
  int adHeight = 0;
  bool wasSeen = false;  // since it was made
  guint seen = 0;        // the source that takes notice of being mapped
  bool wantsAd = false;  // load() was called, and has no outcome yet
  guint givingUp = 0;    // the source that will
  Waiting waiting;
};

enum BannerProperty : guint {
  BannerSize = 1,
  BannerAutoLoad,
  BannerAutoRefresh,
  BannerRefreshInterval,
  BannerAnimation,
  BannerHeavyAdPolicy,
  BannerCollapse,
  BannerTargeting,
  BannerState,
  BannerAdWidth,
  BannerAdHeight,
  BannerPlacement,
  BannerProperties
};
enum class BannerSignal { Loaded, Failed, Pressed, Removed };

// velto-banner.cpp
BannerPrivate& privateOf(VeltoBanner* banner);
void notifyBanner(VeltoBanner* banner, BannerProperty property);
void emitBanner(VeltoBanner* banner, BannerSignal signal, const GError* error = nullptr);
// velto-banner-load.cpp
void loadBanner(VeltoBanner* banner);
void passOnValues(const BannerPrivate& priv);  // those that the next load counts on, which may be a refresh
void letBannerGo(VeltoBanner* banner);
// velto-banner-properties.cpp
void keepRoom(VeltoBanner* banner);

}  // namespace velto_glib
