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
