// What may change while the client runs: key, consent, what a person has allowed.
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  return clientText(self, ClientPublisherKey);
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), FALSE);
  return valuesOf(self).numbers[ClientTestMode];
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  return clientText(self, ClientEndpoint);
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), FALSE);
  return valuesOf(self).numbers[ClientPersonalInfoAllowed];
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  return clientText(self, ClientGdprConsent);
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  return clientText(self, ClientUsPrivacy);
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), VeltoAccess(0));
  return VeltoAccess(valuesOf(self).numbers[ClientCalendarAccess]);
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
  g_return_if_fail(access >= 0 && access <= VELTO_ACCESS_ALLOWED);
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), VeltoAccess(0));
  return VeltoAccess(valuesOf(self).numbers[ClientPicturesAccess]);
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
  g_return_if_fail(access >= 0 && access <= VELTO_ACCESS_ALLOWED);
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
  g_return_val_if_fail(VELTO_IS_CLIENT(self), VeltoForeground(0));
  return VeltoForeground(valuesOf(self).numbers[ClientInForeground]);
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
  g_return_if_fail(VELTO_IS_CLIENT(self));
  g_return_if_fail(in_foreground >= 0 && in_foreground <= VELTO_FOREGROUND_NO);
  setClientNumber(self, ClientInForeground, in_foreground, __func__);
}
