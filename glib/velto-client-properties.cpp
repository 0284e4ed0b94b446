// The client's properties: their list, and the one way in which each kind is set.
#include "velto-client-accessors.h"

namespace velto_glib {
namespace {

GParamSpec* properties[ClientProperties];

bool isText(guint id) {
  return id <= ClientVersion;
}

bool isNumber(guint id) {
  return (id >= ClientTestMode && id <= ClientInForeground) || id == ClientLocalNetworkAllowed;
}

// What the library takes only once.
bool isReadAtStart(guint id) {
  return id <= ClientTrackingServer || id >= ClientCaFile;
}

void get(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_CLIENT(object);
  const auto& values = valuesOf(self);
  if (id == ClientVersion) return g_value_set_string(value, velto_client_get_version(self));
  if (isText(id)) return g_value_set_string(value, clientText(self, id, pspec->name));
  if (id == ClientCaFile) return g_value_set_object(value, values.caFile);
  if (id == ClientHostMap) return g_value_set_variant(value, values.hostMap);
  if (id == ClientRequestTimeout) return g_value_set_uint(value, values.requestTimeout);
  if (id == ClientLeastTimeUnderTouch) return g_value_set_uint(value, values.leastTimeUnderTouch);
  if (G_VALUE_HOLDS_BOOLEAN(value)) return g_value_set_boolean(value, values.numbers[id]);
  g_value_set_enum(value, values.numbers[id]);
}

void set(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_CLIENT(object);
  if (isText(id)) return setClientText(self, id, g_value_get_string(value), pspec->name);
  if (id == ClientCaFile) return velto_client_set_ca_file(self, G_FILE(g_value_get_object(value)));
  if (id == ClientHostMap) return velto_client_set_host_map(self, g_value_get_variant(value));
  if (id == ClientRequestTimeout) return velto_client_set_request_timeout(self, g_value_get_uint(value));
  if (id == ClientLeastTimeUnderTouch)
    return velto_client_set_least_time_under_touch(self, g_value_get_uint(value));
  const bool isSwitch = G_VALUE_HOLDS_BOOLEAN(value);
  setClientNumber(self, id, isSwitch ? g_value_get_boolean(value) : g_value_get_enum(value), pspec->name);
}

// Who calls in with a client, which may be anything.
bool isClient(VeltoClient* client, const char* function) {
  if (VELTO_IS_CLIENT(client)) return isMainThread(function);
  g_return_if_fail_warning(G_LOG_DOMAIN, function, "VELTO_IS_CLIENT(self)");
  return false;
}

}  // namespace

bool mayChange(VeltoClient* client, guint property, const char* function) {
  if (!runs(client) || !isReadAtStart(property)) return true;
  g_critical("%s: %s is read when the client starts; set it before velto_client_start()", function,
             properties[property]->name);
  return false;
}

void changed(VeltoClient* client, guint property) {
  guarded(__func__, [&] { putIntoEffect(client, property); });
  g_object_notify_by_pspec(G_OBJECT(client), properties[property]);
}

const char* clientText(VeltoClient* client, guint property, const char* function) {
  if (!isClient(client, function)) return nullptr;
  const auto& text = valuesOf(client).texts[property];
  return text ? text->c_str() : nullptr;
}

int clientNumber(VeltoClient* client, guint property, const char* function) {
  return isClient(client, function) ? valuesOf(client).numbers[property] : 0;
}

void setClientText(VeltoClient* client, guint property, const char* text, const char* function) {
  if (!isClient(client, function)) return;
  auto& value = valuesOf(client).texts[property];
  if (text ? value && *value == text : !value) return;
  if (!mayChange(client, property, function)) return;
  value = text ? std::optional<std::string>(text) : std::nullopt;
  changed(client, property);
}

void setClientNumber(VeltoClient* client, guint property, int number, const char* function) {
  if (!isClient(client, function) || !isNumber(property)) return;
  const auto* pspec = properties[property];
  if (G_IS_PARAM_SPEC_ENUM(pspec) && !isValueOf(pspec->value_type, number, function)) return;
  auto& value = valuesOf(client).numbers[property];
  if (value == number || !mayChange(client, property, function)) return;
  value = number;
  changed(client, property);
}

void addClientProperties(GObjectClass* klass) {
  klass->get_property = get;
  klass->set_property = set;
  constexpr auto flags = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY);
  const auto text = [&](guint id, const char* name) {
    properties[id] = g_param_spec_string(name, nullptr, nullptr, nullptr, flags);
  };
  const auto choice = [&](guint id, const char* name, GType type) {
    properties[id] = g_param_spec_enum(name, nullptr, nullptr, type, 0, flags);
  };

  /**
   * VeltoClient:application-id: (getter get_application_id) (setter set_application_id)
   *
   * A reverse-domain name, such as "org.example.player". It names the folder of the client's data, and is in requests.
   *
   * Since: 1.0
   */
  text(ClientApplicationId, "application-id");
  /**
   * VeltoClient:application-name: (getter get_application_name) (setter set_application_name)
   *
   * What people call the application; else what [func@GLib.get_application_name] says.
   *
   * Since: 1.0
   */
  text(ClientApplicationName, "application-name");
  /**
   * VeltoClient:publisher-key: (getter get_publisher_key) (setter set_publisher_key)
   *
   * Who publishes the application.
   *
   * Since: 1.0
   */
  text(ClientPublisherKey, "publisher-key");
  /**
   * VeltoClient:endpoint: (getter get_endpoint) (setter set_endpoint)
   *
   * The publisher's own endpoint for ad requests.
   *
   * Since: 1.0
   */
  text(ClientEndpoint, "endpoint");
  /**
   * VeltoClient:gdpr-consent: (getter get_gdpr_consent) (setter set_gdpr_consent)
   *
   * The consent string, which is sent as it stands.
   *
   * Since: 1.0
   */
  text(ClientGdprConsent, "gdpr-consent");
  /**
   * VeltoClient:us-privacy: (getter get_us_privacy) (setter set_us_privacy)
   *
   * The US privacy string, which is sent as it stands.
   *
   * Since: 1.0
   */
  text(ClientUsPrivacy, "us-privacy");
  /**
   * VeltoClient:ad-server: (getter get_ad_server) (setter set_ad_server)
   *
   * The name of the ad server, with a port where it is not 443.
   *
   * Since: 1.0
   */
  text(ClientAdServer, "ad-server");
  /**
   * VeltoClient:publisher-server: (getter get_publisher_server) (setter set_publisher_server)
   *
   * The domain below which the publishers' own endpoints stand.
   *
   * Since: 1.0
   */
  text(ClientPublisherServer, "publisher-server");
  /**
   * VeltoClient:tracking-server: (getter get_tracking_server) (setter set_tracking_server)
   *
   * The name of the server that is told of installs and clicks.
   *
   * Since: 1.0
   */
  text(ClientTrackingServer, "tracking-server");
  /**
   * VeltoClient:version: (getter get_version)
   *
   * The version of the library, as the ad server knows it.
   *
   * Since: 1.0
   */
  properties[ClientVersion] = g_param_spec_string("version", nullptr, nullptr, nullptr,
                                                  GParamFlags(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS));
  /**
   * VeltoClient:test-mode: (getter get_test_mode) (setter set_test_mode)
   *
   * Whether to ask for test ads.
   *
   * Since: 1.0
   */
  properties[ClientTestMode] = g_param_spec_boolean("test-mode", nullptr, nullptr, FALSE, flags);
  /**
   * VeltoClient:personal-info-allowed: (getter get_personal_info_allowed) (setter set_personal_info_allowed)
   *
   * Whether the person has agreed that personal data is processed.
   *
   * Since: 1.0
   */
  properties[ClientPersonalInfoAllowed] =
      g_param_spec_boolean("personal-info-allowed", nullptr, nullptr, FALSE, flags);
  /**
   * VeltoClient:collect-metrics: (getter get_collect_metrics) (setter set_collect_metrics)
   *
   * Whether loads are counted, from then on, for [method@Velto.Client.dup_metrics].
   *
   * Since: 1.0
   */
  properties[ClientCollectMetrics] = g_param_spec_boolean("collect-metrics", nullptr, nullptr, FALSE, flags);
  /**
   * VeltoClient:calendar-access: (getter get_calendar_access) (setter set_calendar_access)
   *
   * Whether ads may add events to the person's calendar. The application asks the person, the library never does.
   *
   * Since: 1.0
   */
  choice(ClientCalendarAccess, "calendar-access", VELTO_TYPE_ACCESS);
  /**
   * VeltoClient:pictures-access: (getter get_pictures_access) (setter set_pictures_access)
   *
   * Whether ads may put pictures into the person's folder of pictures.
   *
   * Since: 1.0
   */
  choice(ClientPicturesAccess, "pictures-access", VELTO_TYPE_ACCESS);
  /**
   * VeltoClient:in-foreground: (getter get_in_foreground) (setter set_in_foreground)
   *
   * Whether a person uses the application now. While nobody does, nothing is sent that can wait.
   *
   * Since: 1.0
   */
  choice(ClientInForeground, "in-foreground", VELTO_TYPE_FOREGROUND);
  /**
   * VeltoClient:ca-file: (getter get_ca_file) (setter set_ca_file)
   *
   * Certificate authorities (PEM) to trust instead of the system's, for test servers.
   *
   * Since: 1.0
   */
  properties[ClientCaFile] = g_param_spec_object("ca-file", nullptr, nullptr, G_TYPE_FILE, flags);
  /**
   * VeltoClient:host-map: (getter get_host_map) (setter set_host_map)
   *
   * Where to connect to instead of a host, for test servers: host names to addresses, such as "ads.example.com" to
   * "127.0.0.1:8443". A name may begin with "*." for all names below a domain. Certificates are checked for the name.
   *
   * Since: 1.0
   */
  properties[ClientHostMap] =
      g_param_spec_variant("host-map", nullptr, nullptr, G_VARIANT_TYPE("a{ss}"), nullptr, flags);
  /**
   * VeltoClient:request-timeout: (getter get_request_timeout) (setter set_request_timeout)
   *
   * After how many seconds without any data a request has failed.
   *
   * Since: 1.0
   */
  properties[ClientRequestTimeout] =
      g_param_spec_uint("request-timeout", nullptr, nullptr, 1, G_MAXINT, defaultRequestTimeout, flags);
  /**
   * VeltoClient:local-network-allowed: (getter get_local_network_allowed) (setter set_local_network_allowed)
   *
   * Whether ads may connect to this machine and to the network around it, such as an ad server of the house. What
   * [property@Velto.Client:host-map] names is reached in any case.
   *
   * Since: 1.0
   */
  properties[ClientLocalNetworkAllowed] =
      g_param_spec_boolean("local-network-allowed", nullptr, nullptr, FALSE, flags);
  /**
   * VeltoClient:least-time-under-touch: (getter get_least_time_under_touch) (setter set_least_time_under_touch)
   *
   * For how many milliseconds an ad has to have been where it is touched, for that touch to open anything: none does that
   * was meant for what was there before.
   *
   * Since: 1.0
   */
  properties[ClientLeastTimeUnderTouch] = g_param_spec_uint("least-time-under-touch", nullptr, nullptr, 0,
                                                            G_MAXINT, defaultLeastTimeUnderTouch, flags);
  g_object_class_install_properties(klass, ClientProperties, properties);
}

}  // namespace velto_glib
