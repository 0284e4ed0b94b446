// The enumerations of banners, interstitials and clients.
#pragma once

#include <glib-object.h>

G_BEGIN_DECLS

/**
 * VeltoBannerSize:
 * @VELTO_BANNER_SIZE_SMART: as wide as fits the screen
 * @VELTO_BANNER_SIZE_BANNER: 320 × 50
 * @VELTO_BANNER_SIZE_LEADERBOARD: 728 × 90
 * @VELTO_BANNER_SIZE_MEDIUM_RECTANGLE: 300 × 250
 *
 * What a banner asks the ad server for, in points. The ad itself says how large it is.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_BANNER_SIZE_SMART,
  VELTO_BANNER_SIZE_BANNER,
  VELTO_BANNER_SIZE_LEADERBOARD,
  VELTO_BANNER_SIZE_MEDIUM_RECTANGLE,
} VeltoBannerSize;

/**
 * VeltoBannerState:
 * @VELTO_BANNER_STATE_EMPTY: there is no ad
 * @VELTO_BANNER_STATE_LOADING: there is no ad yet, but one is on its way
 * @VELTO_BANNER_STATE_SHOWN: an ad is shown, also while the next one is on its way
 * @VELTO_BANNER_STATE_EXPANDED: the ad covers the window for a time
 * @VELTO_BANNER_STATE_RESIZED: the ad is larger than its place for a time
 *
 * What stands in a banner's place.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_BANNER_STATE_EMPTY,
  VELTO_BANNER_STATE_LOADING,
  VELTO_BANNER_STATE_SHOWN,
  VELTO_BANNER_STATE_EXPANDED,
  VELTO_BANNER_STATE_RESIZED,
} VeltoBannerState;

/**
 * VeltoInterstitialState:
 * @VELTO_INTERSTITIAL_STATE_EMPTY: there is no ad
 * @VELTO_INTERSTITIAL_STATE_LOADING: there is no ad yet, but one is on its way
 * @VELTO_INTERSTITIAL_STATE_READY: an ad can be presented
 * @VELTO_INTERSTITIAL_STATE_PRESENTED: it covers its window
 *
 * What an interstitial is good for now.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_INTERSTITIAL_STATE_EMPTY,
  VELTO_INTERSTITIAL_STATE_LOADING,
  VELTO_INTERSTITIAL_STATE_READY,
  VELTO_INTERSTITIAL_STATE_PRESENTED,
} VeltoInterstitialState;

/**
 * VeltoAnimation:
 * @VELTO_ANIMATION_NONE: at once
 * @VELTO_ANIMATION_RANDOM: one of those below
 * @VELTO_ANIMATION_FROM_LEFT: slides in from the left
 * @VELTO_ANIMATION_FROM_LEFT_WITH_SPRING: slides in from the left and swings
 * @VELTO_ANIMATION_FROM_RIGHT: slides in from the right
 * @VELTO_ANIMATION_FROM_RIGHT_WITH_SPRING: slides in from the right and swings
 *
 * How an ad comes in.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_ANIMATION_NONE,
  VELTO_ANIMATION_RANDOM,
  VELTO_ANIMATION_FROM_LEFT,
  VELTO_ANIMATION_FROM_LEFT_WITH_SPRING,
  VELTO_ANIMATION_FROM_RIGHT,
  VELTO_ANIMATION_FROM_RIGHT_WITH_SPRING,
} VeltoAnimation;

/**
 * VeltoHeavyAdPolicy:
 * @VELTO_HEAVY_AD_POLICY_REPORT: it is told in the log and the figures, and goes on
 * @VELTO_HEAVY_AD_POLICY_PAUSE_UNSEEN: what it plays stands still while nobody sees it
 * @VELTO_HEAVY_AD_POLICY_REPLACE: it is taken out, and the next refresh brings another
 *
 * What becomes of an ad that costs the device too much: network, processor or memory.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_HEAVY_AD_POLICY_REPORT,
  VELTO_HEAVY_AD_POLICY_PAUSE_UNSEEN,
  VELTO_HEAVY_AD_POLICY_REPLACE,
} VeltoHeavyAdPolicy;

G_END_DECLS
