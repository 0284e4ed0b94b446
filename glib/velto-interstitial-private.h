// What stands behind an interstitial: its values and the ad.
#pragma once

#include "velto-ground-private.h"
#include "velto-waiting.h"

namespace velto_glib {

// What the ad tells. It may live longer than the interstitial by a request that is on its way.
class InterstitialDelegate;

struct InterstitialPrivate {
  explicit InterstitialPrivate(VeltoInterstitial* interstitial);
  ~InterstitialPrivate();

  std::shared_ptr<InterstitialDelegate> delegate;
  std::shared_ptr<velto::VeltoInterstitialViewController> ad;  // null until the first load
  GtkWidget* autoPresentFor = nullptr;                         // weak
  VeltoAnimation animation = VELTO_ANIMATION_NONE;
  VeltoHeavyAdPolicy heavyAdPolicy = VELTO_HEAVY_AD_POLICY_REPORT;
  VeltoTargeting* targeting = nullptr;
  std::optional<std::string> placement;
  VeltoInterstitialState state = VELTO_INTERSTITIAL_STATE_EMPTY;
  bool rising = false;    // on its way to the screen
  bool appeared = false;  // what is presented has been seen
  bool wantsAd = false;   // load() was called, and has no outcome yet
  guint givingUp = 0;     // the source that will
  Waiting loading;
  Waiting presenting;
};

enum InterstitialProperty : guint {
  InterstitialReady = 1,
  InterstitialState,
  InterstitialAutoPresentFor,
  InterstitialAnimation,
  InterstitialHeavyAdPolicy,
  InterstitialTargeting,
  InterstitialPlacement,
  InterstitialProperties
};
enum class InterstitialSignal { Loaded, Failed, Presented, Pressed, Closed };

// velto-interstitial.cpp
InterstitialPrivate& privateOf(VeltoInterstitial* interstitial);
void notifyInterstitial(VeltoInterstitial* interstitial, InterstitialProperty property);
void emitInterstitial(VeltoInterstitial* interstitial, InterstitialSignal signal,
                      const GError* error = nullptr);
// velto-interstitial-load.cpp
void letInterstitialGo(VeltoInterstitial* interstitial);

}  // namespace velto_glib
