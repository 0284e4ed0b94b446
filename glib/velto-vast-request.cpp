// The query of a request for a video ad.
#include <array>

#include "velto-private.h"

namespace {

enum VastProperty : guint {
  Host = 1,
  ApplicationName,
  StoreAddress,
  Category,
  MeasurementPartner,
  MeasurementVersion,
  Width,
  Height,
  Position,
  MinDuration,
  MaxDuration,
  PlaybackMethod,
  InteractiveVersion,
  Interactive,
  Measured,
  ForChildren,
  Properties
};

struct Values {
  std::array<std::optional<std::string>, Properties> texts;
  std::array<int, Properties> numbers{};  // and switches
  std::optional<velto::VeltoVASTURL::Numbers> formats;
  std::optional<velto::VeltoVASTURL::Numbers> versions;
};

GParamSpec* properties[Properties];

}  // namespace

struct _VeltoVastRequest {
  GObject parent_instance;
  Values* values;
};

/**
 * VeltoVastRequest:
 *
 * The address of a request for a video ad, for applications that play video themselves: they fetch the document (VAST) that
 * stands there, and play what it says.
 *
 * ```c
 * VeltoVastRequest *request = velto_vast_request_new ("video.example.com", 640, 360);
 * char *address = velto_vast_request_build_url (request, &error);
 * ```
 *
 * Key, test mode and consent are those of the [class@Velto.Client] that has been started.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoVastRequest, velto_vast_request, G_TYPE_OBJECT)

static void velto_vast_request_get_property(GObject* object, guint id, GValue* value, GParamSpec*) {
  const auto& values = *VELTO_VAST_REQUEST(object)->values;
  if (G_VALUE_HOLDS_BOOLEAN(value)) return g_value_set_boolean(value, values.numbers[id]);
  if (G_VALUE_HOLDS_INT(value)) return g_value_set_int(value, values.numbers[id]);
  g_value_set_string(value, values.texts[id] ? values.texts[id]->c_str() : nullptr);
}

static void velto_vast_request_set_property(GObject* object, guint id, const GValue* value,
                                            GParamSpec* pspec) {
  auto& values = *VELTO_VAST_REQUEST(object)->values;
  bool isOther = false;
  if (id <= MeasurementVersion) {
    const char* given = g_value_get_string(value);
    const auto text = given ? std::optional<std::string>(given) : std::nullopt;
    isOther = std::exchange(values.texts[id], text) != text;
  } else {
    const int number = G_VALUE_HOLDS_INT(value) ? g_value_get_int(value) : g_value_get_boolean(value);
    isOther = std::exchange(values.numbers[id], number) != number;
  }
  if (isOther) g_object_notify_by_pspec(object, pspec);
}

static void velto_vast_request_finalize(GObject* object) {
  delete VELTO_VAST_REQUEST(object)->values;
  G_OBJECT_CLASS(velto_vast_request_parent_class)->finalize(object);
}

static void velto_vast_request_class_init(VeltoVastRequestClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->get_property = velto_vast_request_get_property;
  object_class->set_property = velto_vast_request_set_property;
  object_class->finalize = velto_vast_request_finalize;
  constexpr auto usual = G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY;
  const auto text = [&](guint id, const char* name) {
    properties[id] = g_param_spec_string(name, nullptr, nullptr, nullptr, GParamFlags(usual));
  };
  const auto number = [&](guint id, const char* name, int value) {
    properties[id] = g_param_spec_int(name, nullptr, nullptr, 0, G_MAXINT, value, GParamFlags(usual));
  };
  const auto flag = [&](guint id, const char* name) {
    properties[id] = g_param_spec_boolean(name, nullptr, nullptr, FALSE, GParamFlags(usual));
  };
  /**
   * VeltoVastRequest:host:
   *
   * The server to ask, with a port where it is not 443.
   *
   * Since: 1.0
   */
  text(Host, "host");
  /**
   * VeltoVastRequest:application-name:
   *
   * The application's name; else the client's.
   *
   * Since: 1.0
   */
  text(ApplicationName, "application-name");
  /**
   * VeltoVastRequest:store-address:
   *
   * Where the application can be had.
   *
   * Since: 1.0
   */
  text(StoreAddress, "store-address");
  /**
   * VeltoVastRequest:category:
   *
   * The category of the application.
   *
   * Since: 1.0
   */
  text(Category, "category");
  /**
   * VeltoVastRequest:measurement-partner:
   *
   * The partner name for Open Measurement, of a player that measures.
   *
   * Since: 1.0
   */
  text(MeasurementPartner, "measurement-partner");
  /**
   * VeltoVastRequest:measurement-version:
   *
   * The version of that partner.
   *
   * Since: 1.0
   */
  text(MeasurementVersion, "measurement-version");
  /**
   * VeltoVastRequest:width:
   *
   * The player's width in points.
   *
   * Since: 1.0
   */
  number(Width, "width", 0);
  /**
   * VeltoVastRequest:height:
   *
   * The player's height in points.
   *
   * Since: 1.0
   */
  number(Height, "height", 0);
  /**
   * VeltoVastRequest:position:
   *
   * The place of the ad in the content, in the server's code.
   *
   * Since: 1.0
   */
  number(Position, "position", 1);
  /**
   * VeltoVastRequest:min-duration:
   *
   * The shortest ad to take, in seconds.
   *
   * Since: 1.0
   */
  number(MinDuration, "min-duration", 5);
  /**
   * VeltoVastRequest:max-duration:
   *
   * The longest ad to take, in seconds.
   *
   * Since: 1.0
   */
  number(MaxDuration, "max-duration", 90);
  /**
   * VeltoVastRequest:playback-method:
   *
   * How playback starts, in the server's code.
   *
   * Since: 1.0
   */
  number(PlaybackMethod, "playback-method", 1);
  /**
   * VeltoVastRequest:interactive-version:
   *
   * The version of interactive ads that the player runs.
   *
   * Since: 1.0
   */
  number(InteractiveVersion, "interactive-version", 1);
  /**
   * VeltoVastRequest:interactive:
   *
   * Whether the player runs interactive ads.
   *
   * Since: 1.0
   */
  flag(Interactive, "interactive");
  /**
   * VeltoVastRequest:measured:
   *
   * Whether the player measures its ads (Open Measurement).
   *
   * Since: 1.0
   */
  flag(Measured, "measured");
  /**
   * VeltoVastRequest:for-children:
   *
   * Whether the application is directed at children.
   *
   * Since: 1.0
   */
  flag(ForChildren, "for-children");
  g_object_class_install_properties(object_class, Properties, properties);
}

static void velto_vast_request_init(VeltoVastRequest* self) {
  self->values = new Values;
  for (guint id = Width; id <= InteractiveVersion; ++id)
    self->values->numbers[id] = G_PARAM_SPEC_INT(properties[id])->default_value;
}

/**
 * velto_vast_request_new:
 * @host: the server to ask
 * @width: the player's width in points
 * @height: the player's height in points
 *
 * Creates a request.
 *
 * Returns: (transfer full): a new request
 *
 * Since: 1.0
 */
VeltoVastRequest* velto_vast_request_new(const char* host, int width, int height) {
  velto_return_val_if_elsewhere(nullptr);
  g_return_val_if_fail(host, nullptr);
  g_return_val_if_fail(width >= 0 && height >= 0, nullptr);
  return VELTO_VAST_REQUEST(
      g_object_new(VELTO_TYPE_VAST_REQUEST, "host", host, "width", width, "height", height, nullptr));
}

static bool are_between(int least, int most, const int* codes, gsize n_codes, const char* function) {
  for (gsize i = 0; i < n_codes; ++i) {
    if (codes[i] >= least && codes[i] <= most) continue;
    g_critical("%s: %d is none: use %d to %d", function, codes[i], least, most);
    return false;
  }
  return true;
}

/**
 * velto_vast_request_set_formats:
 * @self: a request
 * @formats: (array length=n_formats): the codes of formats, 0 to 3
 * @n_formats: how many
 *
 * Sets what the player can play. It is format 1 otherwise.
 *
 * Since: 1.0
 */
void velto_vast_request_set_formats(VeltoVastRequest* self, const int* formats, gsize n_formats) {
  g_return_if_fail(VELTO_IS_VAST_REQUEST(self));
  velto_return_if_elsewhere();
  g_return_if_fail(formats || n_formats == 0);
  if (!are_between(0, 3, formats, n_formats, __func__)) return;
  self->values->formats = velto::VeltoVASTURL::Numbers(formats, formats + n_formats);
}

/**
 * velto_vast_request_set_versions:
 * @self: a request
 * @versions: (array length=n_versions): versions of VAST, 2 or 3
 * @n_versions: how many
 *
 * Sets which documents the player can read. It is version 2 otherwise.
 *
 * Since: 1.0
 */
void velto_vast_request_set_versions(VeltoVastRequest* self, const int* versions, gsize n_versions) {
  g_return_if_fail(VELTO_IS_VAST_REQUEST(self));
  velto_return_if_elsewhere();
  g_return_if_fail(versions || n_versions == 0);
  if (!are_between(2, 3, versions, n_versions, __func__)) return;
  self->values->versions = velto::VeltoVASTURL::Numbers(versions, versions + n_versions);
}

static std::optional<std::string> text_of(const char* text) {
  return text ? std::optional<std::string>(text) : std::nullopt;
}

static std::optional<std::string> build(VeltoVastRequest* self, VeltoClient* client) {
  const auto& texts = self->values->texts;
  const auto& numbers = self->values->numbers;
  const char* name = velto_client_get_application_name(client);
  auto request = velto::VeltoVASTURL::VASTURLforHost(
      texts[Host], text_of(velto_client_get_publisher_key(client)), uint64_t(numbers[Position]),
      numbers[Width], numbers[Height],
      texts[ApplicationName].value_or(name ? name : velto_client_get_application_id(client)),
      texts[StoreAddress].value_or(""));
  if (!request) return std::nullopt;
  request->setGDPROptin(velto_client_get_personal_info_allowed(client));
  request->setGDPRConsent(text_of(velto_client_get_gdpr_consent(client)));
  request->setUsPrivacy(text_of(velto_client_get_us_privacy(client)));
  request->setTest(velto_client_get_test_mode(client));
  request->setMinDurationVideoSeconds(numbers[MinDuration]);
  request->setMaxDurationVideoSeconds(numbers[MaxDuration]);
  request->setVASTVideoFormat(self->values->formats);
  request->setVASTVersion(self->values->versions);
  request->setAppCategory(texts[Category]);
  request->setVASTPlaybackMethod(uint64_t(numbers[PlaybackMethod]));
  request->setVPAIDAd(numbers[Interactive]);
  request->setVPAIDVersion(uint64_t(numbers[InteractiveVersion]));
  request->setOMSDKSupported(numbers[Measured]);
  request->setOMSDKIdentifier(texts[MeasurementPartner]);
  request->setOMSDKVersionString(texts[MeasurementVersion]);
  request->setCOPPA(numbers[ForChildren]);
  return request->stringURL();
}

/**
 * velto_vast_request_build_url:
 * @self: a request
 * @error: return location for an error of [error@Velto.ClientError]
 *
 * Makes the address, anew each time, so that no cache answers.
 *
 * Returns: (transfer full): the address, or %NULL with an error
 *
 * Since: 1.0
 */
char* velto_vast_request_build_url(VeltoVastRequest* self, GError** error) {
  g_return_val_if_fail(VELTO_IS_VAST_REQUEST(self), nullptr);
  g_return_val_if_fail(!error || !*error, nullptr);
  velto_return_val_if_elsewhere(nullptr);
  auto* client = velto_client_get_default();
  if (!client) {
    g_set_error_literal(error, VELTO_CLIENT_ERROR, VELTO_CLIENT_ERROR_NOT_READY,
                        "no address without a client: call velto_client_start() before");
    return nullptr;
  }
  std::optional<std::string> address;
  if (!velto_glib::guarded(error, [&] { address = build(self, client); })) return nullptr;
  if (address) return g_strdup(address->c_str());
  g_set_error_literal(error, VELTO_CLIENT_ERROR, VELTO_CLIENT_ERROR_INVALID, "the host is none");
  return nullptr;
}
