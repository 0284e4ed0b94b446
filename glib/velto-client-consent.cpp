// What may change while the client runs: key, consent, what a person has allowed, and what is counted.
#include "velto-client-accessors.h"

using namespace velto_glib;

/**
 * velto_client_get_publisher_key: (get-property publisher-key)
 * @self: a client
 *
 * Gets who publishes the application.
 *
 * Returns: (nullable) (transfer none): the key
 *
 * Since: 1.0
 */
const char* velto_client_get_publisher_key(VeltoClient* self) {
  return clientText(self, ClientPublisherKey, __func__);
}

/**
 * velto_client_set_publisher_key: (set-property publisher-key)
 * @self: a client
 * @publisher_key: (nullable): the key
 *
 * Sets who publishes the application.
 *
 * Since: 1.0
 */
void velto_client_set_publisher_key(VeltoClient* self, const char* publisher_key) {
  setClientText(self, ClientPublisherKey, publisher_key, __func__);
}

/**
 * velto_client_get_test_mode: (get-property test-mode)
 * @self: a client
 *
 * Gets whether to ask for test ads.
 *
 * Returns: whether to ask for test ads
 *
 * Since: 1.0
 */
gboolean velto_client_get_test_mode(VeltoClient* self) {
  return clientNumber(self, ClientTestMode, __func__);
}

/**
 * velto_client_set_test_mode: (set-property test-mode)
 * @self: a client
 * @test_mode: whether to ask for test ads
 *
 * Sets whether to ask for test ads.
 *
 * Since: 1.0
 */
void velto_client_set_test_mode(VeltoClient* self, gboolean test_mode) {
  setClientNumber(self, ClientTestMode, test_mode != FALSE, __func__);
}

/**
 * velto_client_get_endpoint: (get-property endpoint)
 * @self: a client
 *
 * Gets the publisher's own endpoint.
 *
 * Returns: (nullable) (transfer none): the endpoint, or %NULL for the ad server
 *
 * Since: 1.0
 */
const char* velto_client_get_endpoint(VeltoClient* self) {
  return clientText(self, ClientEndpoint, __func__);
}

/**
 * velto_client_set_endpoint: (set-property endpoint)
 * @self: a client
 * @endpoint: (nullable): the endpoint, or %NULL for the ad server
 *
 * Sets the publisher's own endpoint.
 *
 * Since: 1.0
 */
void velto_client_set_endpoint(VeltoClient* self, const char* endpoint) {
  setClientText(self, ClientEndpoint, endpoint, __func__);
}

/**
 * velto_client_get_personal_info_allowed: (get-property personal-info-allowed)
 * @self: a client
 *
 * Gets whether personal data may be processed.
 *
 * Returns: whether the person has agreed
 *
 * Since: 1.0
 */
gboolean velto_client_get_personal_info_allowed(VeltoClient* self) {
  return clientNumber(self, ClientPersonalInfoAllowed, __func__);
}

/**
 * velto_client_set_personal_info_allowed: (set-property personal-info-allowed)
 * @self: a client
 * @allowed: whether the person has agreed
 *
 * Sets whether personal data may be processed.
 *
 * Since: 1.0
 */
void velto_client_set_personal_info_allowed(VeltoClient* self, gboolean allowed) {
  setClientNumber(self, ClientPersonalInfoAllowed, allowed != FALSE, __func__);
}

/**
 * velto_client_get_gdpr_consent: (get-property gdpr-consent)
 * @self: a client
 *
 * Gets the consent string.
 *
 * Returns: (nullable) (transfer none): the consent string
 *
 * Since: 1.0
 */
const char* velto_client_get_gdpr_consent(VeltoClient* self) {
  return clientText(self, ClientGdprConsent, __func__);
}

/**
 * velto_client_set_gdpr_consent: (set-property gdpr-consent)
 * @self: a client
 * @gdpr_consent: (nullable): the consent string
 *
 * Sets the consent string.
 *
 * Since: 1.0
 */
void velto_client_set_gdpr_consent(VeltoClient* self, const char* gdpr_consent) {
  setClientText(self, ClientGdprConsent, gdpr_consent, __func__);
}

/**
 * velto_client_get_us_privacy: (get-property us-privacy)
 * @self: a client
 *
 * Gets the US privacy string.
 *
 * Returns: (nullable) (transfer none): the US privacy string
 *
 * Since: 1.0
 */
const char* velto_client_get_us_privacy(VeltoClient* self) {
  return clientText(self, ClientUsPrivacy, __func__);
}

/**
 * velto_client_set_us_privacy: (set-property us-privacy)
 * @self: a client
 * @us_privacy: (nullable): the US privacy string
 *
 * Sets the US privacy string.
 *
 * Since: 1.0
 */
void velto_client_set_us_privacy(VeltoClient* self, const char* us_privacy) {
  setClientText(self, ClientUsPrivacy, us_privacy, __func__);
}

/**
 * velto_client_get_calendar_access: (get-property calendar-access)
 * @self: a client
 *
 * Gets whether ads may add events to the person's calendar.
 *
 * Returns: the person's answer
 *
 * Since: 1.0
 */
VeltoAccess velto_client_get_calendar_access(VeltoClient* self) {
  return VeltoAccess(clientNumber(self, ClientCalendarAccess, __func__));
}

/**
 * velto_client_set_calendar_access: (set-property calendar-access)
 * @self: a client
 * @access: the person's answer
 *
 * Sets whether ads may add events to the person's calendar.
 *
 * Since: 1.0
 */
void velto_client_set_calendar_access(VeltoClient* self, VeltoAccess access) {
  setClientNumber(self, ClientCalendarAccess, access, __func__);
}

/**
 * velto_client_get_pictures_access: (get-property pictures-access)
 * @self: a client
 *
 * Gets whether ads may store pictures.
 *
 * Returns: the person's answer
 *
 * Since: 1.0
 */
VeltoAccess velto_client_get_pictures_access(VeltoClient* self) {
  return VeltoAccess(clientNumber(self, ClientPicturesAccess, __func__));
}

/**
 * velto_client_set_pictures_access: (set-property pictures-access)
 * @self: a client
 * @access: the person's answer
 *
 * Sets whether ads may store pictures.
 *
 * Since: 1.0
 */
void velto_client_set_pictures_access(VeltoClient* self, VeltoAccess access) {
  setClientNumber(self, ClientPicturesAccess, access, __func__);
}

/**
 * velto_client_get_in_foreground: (get-property in-foreground)
 * @self: a client
 *
 * Gets whether a person uses the application.
 *
 * Returns: whether a person uses the application
 *
 * Since: 1.0
 */
VeltoForeground velto_client_get_in_foreground(VeltoClient* self) {
  return VeltoForeground(clientNumber(self, ClientInForeground, __func__));
}

/**
 * velto_client_set_in_foreground: (set-property in-foreground)
 * @self: a client
 * @in_foreground: whether a person uses the application
 *
 * Sets whether a person uses the application.
 *
 * Since: 1.0
 */
void velto_client_set_in_foreground(VeltoClient* self, VeltoForeground in_foreground) {
  setClientNumber(self, ClientInForeground, in_foreground, __func__);
}

/**
 * velto_client_get_collect_metrics: (get-property collect-metrics)
 * @self: a client
 *
 * Gets whether loads are counted.
 *
 * Returns: whether they are
 *
 * Since: 1.0
 */
gboolean velto_client_get_collect_metrics(VeltoClient* self) {
  return clientNumber(self, ClientCollectMetrics, __func__);
}

/**
 * velto_client_set_collect_metrics: (set-property collect-metrics)
 * @self: a client
 * @collect_metrics: whether they are
 *
 * Sets whether loads are counted, from then on.
 *
 * Since: 1.0
 */
void velto_client_set_collect_metrics(VeltoClient* self, gboolean collect_metrics) {
  setClientNumber(self, ClientCollectMetrics, collect_metrics != FALSE, __func__);
}

/**
 * velto_client_dup_metrics:
 * @self: a client
 *
 * Writes the counts as OpenMetrics text, for an HTTP handler of the application's or a file that a collector reads.
 *
 * Returns: (nullable) (transfer full): the text, or %NULL while nothing is counted
 *
 * Since: 1.0
 */
char* velto_client_dup_metrics(VeltoClient* self) {
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  const auto& metrics = valuesOf(self).metrics;
  return metrics ? g_strdup(metrics->openMetrics().c_str()) : nullptr;
}
