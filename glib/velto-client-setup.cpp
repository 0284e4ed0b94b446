// What names the application and its servers, read when the client starts.
#include "velto-client-accessors.h"

using namespace velto_glib;

/**
 * velto_client_get_version: (get-property version)
 * @self: a client
 *
 * Gets the version of the library, as the ad server knows it.
 *
 * Returns: (transfer none): the version
 *
 * Since: 1.0
 */
const char* velto_client_get_version(VeltoClient* self) {
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return velto::kVeltoSDKVersion;
}

/**
 * velto_client_get_application_id: (get-property application-id)
 * @self: a client
 *
 * Gets the reverse-domain name of the application.
 *
 * Returns: (nullable) (transfer none): the name
 *
 * Since: 1.0
 */
const char* velto_client_get_application_id(VeltoClient* self) {
  return clientText(self, ClientApplicationId, __func__);
}

/**
 * velto_client_set_application_id: (set-property application-id)
 * @self: a client
 * @application_id: (nullable): the name
 *
 * Sets the reverse-domain name of the application.
 *
 * Since: 1.0
 */
void velto_client_set_application_id(VeltoClient* self, const char* application_id) {
  setClientText(self, ClientApplicationId, application_id, __func__);
}

/**
 * velto_client_get_application_name: (get-property application-name)
 * @self: a client
 *
 * Gets what people call the application.
 *
 * Returns: (nullable) (transfer none): the name
 *
 * Since: 1.0
 */
const char* velto_client_get_application_name(VeltoClient* self) {
  return clientText(self, ClientApplicationName, __func__);
}

/**
 * velto_client_set_application_name: (set-property application-name)
 * @self: a client
 * @application_name: (nullable): the name
 *
 * Sets what people call the application.
 *
 * Since: 1.0
 */
void velto_client_set_application_name(VeltoClient* self, const char* application_name) {
  setClientText(self, ClientApplicationName, application_name, __func__);
}

/**
 * velto_client_get_ad_server: (get-property ad-server)
 * @self: a client
 *
 * Gets the name of the ad server.
 *
 * Returns: (nullable) (transfer none): the name, or %NULL for the usual one
 *
 * Since: 1.0
 */
const char* velto_client_get_ad_server(VeltoClient* self) {
  return clientText(self, ClientAdServer, __func__);
}

/**
 * velto_client_set_ad_server: (set-property ad-server)
 * @self: a client
 * @ad_server: (nullable): the name, or %NULL for the usual one
 *
 * Sets the name of the ad server.
 *
 * Since: 1.0
 */
void velto_client_set_ad_server(VeltoClient* self, const char* ad_server) {
  setClientText(self, ClientAdServer, ad_server, __func__);
}

/**
 * velto_client_get_publisher_server: (get-property publisher-server)
 * @self: a client
 *
 * Gets the domain of the publishers' own endpoints.
 *
 * Returns: (nullable) (transfer none): the domain, or %NULL for the usual one
 *
 * Since: 1.0
 */
const char* velto_client_get_publisher_server(VeltoClient* self) {
  return clientText(self, ClientPublisherServer, __func__);
}

/**
 * velto_client_set_publisher_server: (set-property publisher-server)
 * @self: a client
 * @publisher_server: (nullable): the domain, or %NULL for the usual one
 *
 * Sets the domain of the publishers' own endpoints.
 *
 * Since: 1.0
 */
void velto_client_set_publisher_server(VeltoClient* self, const char* publisher_server) {
  setClientText(self, ClientPublisherServer, publisher_server, __func__);
}

/**
 * velto_client_get_tracking_server: (get-property tracking-server)
 * @self: a client
 *
 * Gets the name of the tracking server.
 *
 * Returns: (nullable) (transfer none): the name, or %NULL for the usual one
 *
 * Since: 1.0
 */
const char* velto_client_get_tracking_server(VeltoClient* self) {
  return clientText(self, ClientTrackingServer, __func__);
}

/**
 * velto_client_set_tracking_server: (set-property tracking-server)
 * @self: a client
 * @tracking_server: (nullable): the name, or %NULL for the usual one
 *
 * Sets the name of the tracking server.
 *
 * Since: 1.0
 */
void velto_client_set_tracking_server(VeltoClient* self, const char* tracking_server) {
  setClientText(self, ClientTrackingServer, tracking_server, __func__);
}

/**
 * velto_client_get_ca_file: (get-property ca-file)
 * @self: a client
 *
 * Gets the certificate authorities to trust.
 *
 * Returns: (nullable) (transfer none): the file, or %NULL for the system's
 *
 * Since: 1.0
 */
GFile* velto_client_get_ca_file(VeltoClient* self) {
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return valuesOf(self).caFile;
}

/**
 * velto_client_set_ca_file: (set-property ca-file)
 * @self: a client
 * @ca_file: (nullable): the file, or %NULL for the system's
 *
 * Sets the certificate authorities to trust.
 *
 * Since: 1.0
 */
void velto_client_set_ca_file(VeltoClient* self, GFile* ca_file) {
  g_return_if_fail(VELTO_IS_CLIENT(self));
  velto_return_if_elsewhere();
  g_return_if_fail(!ca_file || G_IS_FILE(ca_file));
  auto& file = valuesOf(self).caFile;
  if (file == ca_file || (file && ca_file && g_file_equal(file, ca_file))) return;
  if (mayChange(self, ClientCaFile, __func__) && g_set_object(&file, ca_file)) changed(self, ClientCaFile);
}

/**
 * velto_client_get_host_map: (get-property host-map)
 * @self: a client
 *
 * Gets where to connect to instead of hosts.
 *
 * Returns: (nullable) (transfer none): a dictionary of type `a{ss}`
 *
 * Since: 1.0
 */
GVariant* velto_client_get_host_map(VeltoClient* self) {
  g_return_val_if_fail(VELTO_IS_CLIENT(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return valuesOf(self).hostMap;
}

/**
 * velto_client_set_host_map: (set-property host-map)
 * @self: a client
 * @host_map: (nullable): a dictionary of type `a{ss}`; a floating reference is taken
 *
 * Sets where to connect to instead of hosts.
 *
 * Since: 1.0
 */
void velto_client_set_host_map(VeltoClient* self, GVariant* host_map) {
  g_return_if_fail(VELTO_IS_CLIENT(self));
  velto_return_if_elsewhere();
  g_return_if_fail(!host_map || g_variant_is_of_type(host_map, G_VARIANT_TYPE("a{ss}")));
  auto* taken = host_map ? g_variant_ref_sink(host_map) : nullptr;
  auto& map = valuesOf(self).hostMap;
  const bool isSame = map && taken ? g_variant_equal(map, taken) : map == taken;
  if (!isSame && mayChange(self, ClientHostMap, __func__)) {
    std::swap(map, taken);
    changed(self, ClientHostMap);
  }
  g_clear_pointer(&taken, g_variant_unref);
}

/**
 * velto_client_get_request_timeout: (get-property request-timeout)
 * @self: a client
 *
 * Gets after how long a request has failed.
 *
 * Returns: seconds without any data
 *
 * Since: 1.0
 */
guint velto_client_get_request_timeout(VeltoClient* self) {
  g_return_val_if_fail(VELTO_IS_CLIENT(self), 0);
  velto_return_val_if_elsewhere(0);
  return valuesOf(self).requestTimeout;
}

/**
 * velto_client_set_request_timeout: (set-property request-timeout)
 * @self: a client
 * @seconds: seconds without any data, at least 1
 *
 * Sets after how long a request has failed.
 *
 * Since: 1.0
 */
void velto_client_set_request_timeout(VeltoClient* self, guint seconds) {
  g_return_if_fail(VELTO_IS_CLIENT(self));
  velto_return_if_elsewhere();
  g_return_if_fail(seconds >= 1 && seconds <= G_MAXINT);
  if (valuesOf(self).requestTimeout == seconds || !mayChange(self, ClientRequestTimeout, __func__)) return;
  valuesOf(self).requestTimeout = seconds;
  changed(self, ClientRequestTimeout);
}

/**
 * velto_client_get_least_time_under_touch: (get-property least-time-under-touch)
 * @self: a client
 *
 * Gets for how long an ad has to have been where it is touched.
 *
 * Returns: milliseconds
 *
 * Since: 1.0
 */
guint velto_client_get_least_time_under_touch(VeltoClient* self) {
  g_return_val_if_fail(VELTO_IS_CLIENT(self), 0);
  velto_return_val_if_elsewhere(0);
  return valuesOf(self).leastTimeUnderTouch;
}

/**
 * velto_client_set_least_time_under_touch: (set-property least-time-under-touch)
 * @self: a client
 * @milliseconds: how long
 *
 * Sets for how long an ad has to have been where it is touched.
 *
 * Since: 1.0
 */
void velto_client_set_least_time_under_touch(VeltoClient* self, guint milliseconds) {
  g_return_if_fail(VELTO_IS_CLIENT(self));
  velto_return_if_elsewhere();
  g_return_if_fail(milliseconds <= G_MAXINT);
  auto& value = valuesOf(self).leastTimeUnderTouch;
  if (value == milliseconds || !mayChange(self, ClientLeastTimeUnderTouch, __func__)) return;
  value = milliseconds;
  changed(self, ClientLeastTimeUnderTouch);
}

/**
 * velto_client_get_local_network_allowed: (get-property local-network-allowed)
 * @self: a client
 *
 * Gets whether ads may connect to this machine and to the network around it.
 *
 * Returns: whether they may
 *
 * Since: 1.0
 */
gboolean velto_client_get_local_network_allowed(VeltoClient* self) {
  return clientNumber(self, ClientLocalNetworkAllowed, __func__);
}

/**
 * velto_client_set_local_network_allowed: (set-property local-network-allowed)
 * @self: a client
 * @allowed: whether they may
 *
 * Sets whether ads may connect to this machine and to the network around it. They may not at first.
 *
 * Since: 1.0
 */
void velto_client_set_local_network_allowed(VeltoClient* self, gboolean allowed) {
  setClientNumber(self, ClientLocalNetworkAllowed, allowed != FALSE, __func__);
}
