// The client's life: made, started once, the process's own from then on.
#include <memory>

#include "velto-client-private.h"
#include "velto-ground-private.h"

using namespace velto_glib;

struct _VeltoClient {
  GObject parent_instance;
  ClientValues* values;
};

/**
 * VeltoClient:
 *
 * The application towards the ad server: its name and publisher key, what the person has consented to, and where the servers
 * are.
 *
 * A process starts one client, after GTK and before it asks for the first ad. [class@Velto.Banner] and
 * [class@Velto.Interstitial] find it by themselves.
 *
 * ```c
 * VeltoClient *client = velto_client_new ("org.example.player");
 * velto_client_set_publisher_key (client, "your-publisher-key");
 * if (!velto_client_start (client, &error))
 *   g_warning ("no ads: %s", error->message);
 * ```
 *
 * What names the application and its servers is read when the client starts. Key, consent and the rest may change at any
 * time, and are in the next request.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoClient, velto_client, G_TYPE_OBJECT)

static guint open_refused_signal;
static VeltoClient* started_client;  // owned

static void velto_client_finalize(GObject* object) {
  auto* self = VELTO_CLIENT(object);
  g_clear_object(&self->values->caFile);
  g_clear_pointer(&self->values->hostMap, g_variant_unref);
  delete self->values;
  G_OBJECT_CLASS(velto_client_parent_class)->finalize(object);
}

static void velto_client_class_init(VeltoClientClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->finalize = velto_client_finalize;
  addClientProperties(object_class);

  /**
   * VeltoClient::open-refused:
   * @self: the client
   * @address: what it wanted to open
   *
   * An ad wanted to open something outside the application, and nobody had touched that ad.
   *
   * Since: 1.0
   */
  open_refused_signal = g_signal_new("open-refused", VELTO_TYPE_CLIENT, G_SIGNAL_RUN_LAST, 0, nullptr,
                                     nullptr, nullptr, G_TYPE_NONE, 1, G_TYPE_STRING);
}

static void velto_client_init(VeltoClient* self) {
  self->values = new ClientValues;
}

/**
 * velto_client_new:
 * @application_id: a reverse-domain name, such as "org.example.player"
 *
 * Creates a client for an application.
 *
 * Returns: (transfer full): a new client
 *
 * Since: 1.0
 */
VeltoClient* velto_client_new(const char* application_id) {
  velto_return_val_if_elsewhere(nullptr);
  g_return_val_if_fail(application_id, nullptr);
  return VELTO_CLIENT(g_object_new(VELTO_TYPE_CLIENT, "application-id", application_id, nullptr));
}

/**
 * velto_client_get_default:
 *
 * Gets the client that has been started in this process.
 *
 * Returns: (nullable) (transfer none): the client
 *
 * Since: 1.0
 */
VeltoClient* velto_client_get_default() {
  velto_return_val_if_elsewhere(nullptr);
  return started_client;
}

/**
 * velto_client_start:
 * @self: a client
 * @error: return location for an error of [error@Velto.ClientError]
 *
 * Starts it. The process keeps it from then on; it goes with the process.
 *
 * Call it once GTK has been initialized, such as in a handler of [signal@Gio.Application::startup].
 *
 * Returns: whether it has been started
 *
 * Since: 1.0
 */
gboolean velto_client_start(VeltoClient* self, GError** error) {
  g_return_val_if_fail(VELTO_IS_CLIENT(self), FALSE);
  g_return_val_if_fail(!error || !*error, FALSE);
  velto_return_val_if_elsewhere(FALSE);
  const auto refuse = [&](VeltoClientError code, const char* why) {
    g_set_error_literal(error, VELTO_CLIENT_ERROR, code, why);
    return FALSE;
  };
  if (started_client) return refuse(VELTO_CLIENT_ERROR_STARTED, "a client of this process runs already");
  if (const auto missing = ground().missing()) return refuse(VELTO_CLIENT_ERROR_NOT_READY, missing->c_str());
  if (self->values->texts[ClientPublisherKey].value_or("").empty())
    return refuse(VELTO_CLIENT_ERROR_INVALID, "the client has no publisher key");
  if (!guarded(error, [&] { startWith(self); })) return FALSE;
  started_client = VELTO_CLIENT(g_object_ref(self));
  return TRUE;
}

namespace velto_glib {
namespace {

const std::optional<std::string>& text(VeltoClient* client, ClientProperty property) {
  return client->values->texts[property];
}

velto::gtk::Options optionsOf(VeltoClient* client) {
  const auto& values = *client->values;
  velto::gtk::Options options;
  options.applicationIdentifier = text(client, ClientApplicationId).value_or("");
  options.applicationName = text(client, ClientApplicationName).value_or("");
  options.requestTimeout = std::chrono::seconds(values.requestTimeout);
  options.leastTimeUnderTouch = std::chrono::milliseconds(values.leastTimeUnderTouch);
  options.mayReachLocalNetwork = values.numbers[ClientLocalNetworkAllowed] != 0;
  if (values.caFile) {
    auto* path = g_file_get_path(values.caFile);
    if (!path) throw std::invalid_argument("ca-file is no file of this machine");
    options.caFile = path;
    g_free(path);
  }
  if (values.hostMap) {
    GVariantIter each;
    const char *host = nullptr, *address = nullptr;
    g_variant_iter_init(&each, values.hostMap);
    while (g_variant_iter_next(&each, "{&s&s}", &host, &address)) options.hostMap.push_back({host, address});
  }
  options.refusedToOpen = [client](const std::string& address) {
    g_signal_emit(client, open_refused_signal, 0, address.c_str());
  };
  return options;
}

// Whoever registers a key begins anew: the rest has to be said again.
void registerKey(VeltoClient* client) {
  velto::VeltoFramework::addVeltoKey(text(client, ClientPublisherKey).value_or(""),
                                     client->values->numbers[ClientTestMode] != 0);
  velto::VeltoFramework::setEndpoint(text(client, ClientEndpoint));
  velto::VeltoFramework::acceptPersonalInfoContent(client->values->numbers[ClientPersonalInfoAllowed] != 0);
  velto::VeltoFramework::setGDPRConsent(text(client, ClientGdprConsent));
  velto::VeltoFramework::setUsPrivacy(text(client, ClientUsPrivacy));
}

void collectMetrics(VeltoClient* client) {
  const bool isOn = client->values->numbers[ClientCollectMetrics] != 0;
  client->values->metrics = isOn ? velto::VeltoMetrics::collect() : nullptr;
}

velto::gtk::Access accessOf(int value) {
  if (value == VELTO_ACCESS_ALLOWED) return velto::gtk::Access::Allowed;
  return value == VELTO_ACCESS_DENIED ? velto::gtk::Access::Denied : velto::gtk::Access::NotDetermined;
}

}  // namespace

ClientValues& valuesOf(VeltoClient* client) {
  return *client->values;
}

bool runs(VeltoClient* client) {
  return client == started_client;
}

void startWith(VeltoClient* client) {
  ground().install(optionsOf(client));
  // What fails from here on leaves nothing behind.
  std::unique_ptr<VeltoClient, void (*)(VeltoClient*)> installed(client,
                                                                 [](VeltoClient*) { ground().uninstall(); });
  velto::VeltoURL::setServerNames({text(client, ClientAdServer).value_or(""),
                                   text(client, ClientPublisherServer).value_or(""),
                                   text(client, ClientTrackingServer).value_or("")});
  registerKey(client);
  collectMetrics(client);
  ground().setCalendarAccess(accessOf(client->values->numbers[ClientCalendarAccess]));
  ground().setPicturesAccess(accessOf(client->values->numbers[ClientPicturesAccess]));
  const int foreground = client->values->numbers[ClientInForeground];
  if (foreground != VELTO_FOREGROUND_AUTO) ground().setInForeground(foreground == VELTO_FOREGROUND_YES);
  installed.release();
}

void startAgain() {
  if (started_client) startWith(started_client);
}

void putIntoEffect(VeltoClient* client, guint property) {
  if (!runs(client)) return;
  const int number = client->values->numbers[property];
  switch (property) {
    case ClientPublisherKey:
    case ClientTestMode:
      return registerKey(client);
    case ClientEndpoint:
      return velto::VeltoFramework::setEndpoint(text(client, ClientEndpoint));
    case ClientPersonalInfoAllowed:
      return velto::VeltoFramework::acceptPersonalInfoContent(number != 0);
    case ClientGdprConsent:
      return velto::VeltoFramework::setGDPRConsent(text(client, ClientGdprConsent));
    case ClientUsPrivacy:
      return velto::VeltoFramework::setUsPrivacy(text(client, ClientUsPrivacy));
    case ClientCollectMetrics:
      return collectMetrics(client);
    case ClientCalendarAccess:
      return ground().setCalendarAccess(accessOf(number));
    case ClientPicturesAccess:
      return ground().setPicturesAccess(accessOf(number));
    case ClientInForeground:
      return ground().setInForeground(
          number == VELTO_FOREGROUND_AUTO ? std::nullopt : std::optional(number == VELTO_FOREGROUND_YES));
    default:
      return;
  }
}

}  // namespace velto_glib
