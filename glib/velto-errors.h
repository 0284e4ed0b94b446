// The error domains.
#pragma once

#include <glib-object.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

/**
 * VeltoAdError:
 * @VELTO_AD_ERROR_NO_FILL: the server had no ad
 * @VELTO_AD_ERROR_SERVER: the server or the ad's page failed
 * @VELTO_AD_ERROR_DEVELOPER: the request could not be built, or the ad not be used where it was asked for
 * @VELTO_AD_ERROR_CANCELLED: the ad was cleared or destroyed meanwhile
 * @VELTO_AD_ERROR_NO_CONNECTION: the network failed; the message says how
 *
 * Why there is no ad.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_AD_ERROR_NO_FILL,
  VELTO_AD_ERROR_SERVER,
  VELTO_AD_ERROR_DEVELOPER,
  VELTO_AD_ERROR_CANCELLED,
  VELTO_AD_ERROR_NO_CONNECTION,
} VeltoAdError;

/**
 * VELTO_AD_ERROR:
 *
 * The domain of [error@Velto.AdError].
 *
 * Since: 1.0
 */
#define VELTO_AD_ERROR (velto_ad_error_quark())
VELTO_PUBLIC GQuark velto_ad_error_quark(void);
VELTO_PUBLIC const char* velto_ad_error_get_reason(const GError* error);

/**
 * VeltoVideoAdError:
 * @VELTO_VIDEO_AD_ERROR_NOT_XML: the document is not XML
 * @VELTO_VIDEO_AD_ERROR_NOT_VAST: the document lacks what it must have
 * @VELTO_VIDEO_AD_ERROR_VERSION: the document is of a version that is not read
 * @VELTO_VIDEO_AD_ERROR_TRAFFICKING: the ad is of a kind that is not played here
 * @VELTO_VIDEO_AD_ERROR_LINEARITY: the ad is no video
 * @VELTO_VIDEO_AD_ERROR_DURATION: the ad is too long
 * @VELTO_VIDEO_AD_ERROR_CATEGORY_MISSING: the ad does not say its category, and some are not wanted
 * @VELTO_VIDEO_AD_ERROR_CATEGORY_BLOCKED: the ad's category is not wanted
 * @VELTO_VIDEO_AD_ERROR_WRAPPER: the address is none, or leads where it may not
 * @VELTO_VIDEO_AD_ERROR_WRAPPER_TIMEOUT: no answer came in time, or only one of an error
 * @VELTO_VIDEO_AD_ERROR_WRAPPER_LIMIT: one document led to another too often
 * @VELTO_VIDEO_AD_ERROR_NO_ADS: there is no ad
 * @VELTO_VIDEO_AD_ERROR_TOO_OLD: the ad is too old by now
 * @VELTO_VIDEO_AD_ERROR_LINEAR: the ad cannot be shown
 * @VELTO_VIDEO_AD_ERROR_FILE_NOT_FOUND: the ad's file was not found
 * @VELTO_VIDEO_AD_ERROR_FILE_TIMEOUT: the ad's file did not come in time
 * @VELTO_VIDEO_AD_ERROR_NO_SUPPORTED_FILE: none of the ad's files can be played here
 * @VELTO_VIDEO_AD_ERROR_FILE_NOT_SHOWN: the ad's file cannot be decoded, or breaks off
 * @VELTO_VIDEO_AD_ERROR_UNDEFINED: something else
 *
 * Why a video ad was not shown, or not to its end: the numbers that its servers are told, too (VAST 4.2, 2.3.6.3). Others
 * of the standard's may come.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_VIDEO_AD_ERROR_NOT_XML = 100,
  VELTO_VIDEO_AD_ERROR_NOT_VAST = 101,
  VELTO_VIDEO_AD_ERROR_VERSION = 102,
  VELTO_VIDEO_AD_ERROR_TRAFFICKING = 200,
  VELTO_VIDEO_AD_ERROR_LINEARITY = 201,
  VELTO_VIDEO_AD_ERROR_DURATION = 202,
  VELTO_VIDEO_AD_ERROR_CATEGORY_MISSING = 204,
  VELTO_VIDEO_AD_ERROR_CATEGORY_BLOCKED = 205,
  VELTO_VIDEO_AD_ERROR_WRAPPER = 300,
  VELTO_VIDEO_AD_ERROR_WRAPPER_TIMEOUT = 301,
  VELTO_VIDEO_AD_ERROR_WRAPPER_LIMIT = 302,
  VELTO_VIDEO_AD_ERROR_NO_ADS = 303,
  VELTO_VIDEO_AD_ERROR_TOO_OLD = 304,
  VELTO_VIDEO_AD_ERROR_LINEAR = 400,
  VELTO_VIDEO_AD_ERROR_FILE_NOT_FOUND = 401,
  VELTO_VIDEO_AD_ERROR_FILE_TIMEOUT = 402,
  VELTO_VIDEO_AD_ERROR_NO_SUPPORTED_FILE = 403,
  VELTO_VIDEO_AD_ERROR_FILE_NOT_SHOWN = 405,
  VELTO_VIDEO_AD_ERROR_UNDEFINED = 900,
} VeltoVideoAdError;

/**
 * VELTO_VIDEO_AD_ERROR:
 *
 * The domain of [error@Velto.VideoAdError].
 *
 * Since: 1.0
 */
#define VELTO_VIDEO_AD_ERROR (velto_video_ad_error_quark())
VELTO_PUBLIC GQuark velto_video_ad_error_quark(void);

/**
 * VeltoClientError:
 * @VELTO_CLIENT_ERROR_STARTED: a client of this process has been started already
 * @VELTO_CLIENT_ERROR_NOT_READY: it is too early: GTK, or the client itself, has not been started
 * @VELTO_CLIENT_ERROR_INVALID: a value cannot be used
 * @VELTO_CLIENT_ERROR_FAILED: the system refused
 *
 * Why a client could not do what it was asked for.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_CLIENT_ERROR_STARTED,
  VELTO_CLIENT_ERROR_NOT_READY,
  VELTO_CLIENT_ERROR_INVALID,
  VELTO_CLIENT_ERROR_FAILED,
} VeltoClientError;

/**
 * VELTO_CLIENT_ERROR:
 *
 * The domain of [error@Velto.ClientError].
 *
 * Since: 1.0
 */
#define VELTO_CLIENT_ERROR (velto_client_error_quark())
VELTO_PUBLIC GQuark velto_client_error_quark(void);

G_END_DECLS
