// The enumerations of video ads.
#pragma once

#include <glib-object.h>

G_BEGIN_DECLS

/**
 * VeltoVideoAdState:
 * @VELTO_VIDEO_AD_STATE_EMPTY: there is no ad
 * @VELTO_VIDEO_AD_STATE_LOADING: there is no ad yet, but one is on its way
 * @VELTO_VIDEO_AD_STATE_READY: ads can be played
 * @VELTO_VIDEO_AD_STATE_PLAYING: ads are on the screen
 * @VELTO_VIDEO_AD_STATE_PAUSED: they are, and stand still
 *
 * What a video ad is good for now.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_VIDEO_AD_STATE_EMPTY,
  VELTO_VIDEO_AD_STATE_LOADING,
  VELTO_VIDEO_AD_STATE_READY,
  VELTO_VIDEO_AD_STATE_PLAYING,
  VELTO_VIDEO_AD_STATE_PAUSED,
} VeltoVideoAdState;

/**
 * VeltoVideoAdPosition:
 * @VELTO_VIDEO_AD_POSITION_PREROLL: before it
 * @VELTO_VIDEO_AD_POSITION_MIDROLL: in it
 * @VELTO_VIDEO_AD_POSITION_POSTROLL: behind it
 * @VELTO_VIDEO_AD_POSITION_STANDALONE: there is none
 *
 * Where ads stand in the application's own video.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_VIDEO_AD_POSITION_PREROLL,
  VELTO_VIDEO_AD_POSITION_MIDROLL,
  VELTO_VIDEO_AD_POSITION_POSTROLL,
  VELTO_VIDEO_AD_POSITION_STANDALONE,
} VeltoVideoAdPosition;

/**
 * VeltoVideoAdQuartile:
 * @VELTO_VIDEO_AD_QUARTILE_FIRST: a quarter
 * @VELTO_VIDEO_AD_QUARTILE_MIDPOINT: half
 * @VELTO_VIDEO_AD_QUARTILE_THIRD: three quarters
 *
 * How much of an ad has been played.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_VIDEO_AD_QUARTILE_FIRST,
  VELTO_VIDEO_AD_QUARTILE_MIDPOINT,
  VELTO_VIDEO_AD_QUARTILE_THIRD,
} VeltoVideoAdQuartile;

G_END_DECLS
