// The video ad's properties. Those that count from the next load on have no functions of their own.
#include "velto-video-ad-private.h"

namespace velto_glib {
namespace {

GParamSpec* properties[VideoAdProperties];

void get(GObject* object, guint id, GValue* value, GParamSpec*) {
  const auto& priv = privateOf(VELTO_VIDEO_AD(object));
  switch (id) {
    case VideoAdState:
      return g_value_set_enum(value, priv.state);
    case VideoAdInfo:
      return g_value_set_object(value, priv.info);
    case VideoAdVolume:
      return g_value_set_double(value, priv.volume);
    case VideoAdRefusedVendors:
      return g_value_set_boxed(value, priv.refusedVendors);
    case VideoAdPosition:
      return g_value_set_enum(value, int(priv.numbers[id]));
    default:
      if (G_VALUE_HOLDS_BOOLEAN(value)) return g_value_set_boolean(value, priv.numbers[id] != 0);
      if (G_VALUE_HOLDS_UINT(value)) return g_value_set_uint(value, priv.numbers[id]);
      g_value_set_string(value, priv.texts[id] ? priv.texts[id]->c_str() : nullptr);
  }
}

bool takeVendors(VideoAdPrivate& priv, char** vendors) {
  auto* const before = priv.refusedVendors;
  if (before && vendors ? g_strv_equal(before, vendors) : before == vendors) return false;
  priv.refusedVendors = g_strdupv(vendors);
  g_strfreev(before);
  return true;
}

void set(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_VIDEO_AD(object);
  auto& priv = privateOf(self);
  if (id == VideoAdVolume) return velto_video_ad_set_volume(self, g_value_get_double(value));
  if (id == VideoAdFullscreen) return velto_video_ad_set_fullscreen(self, g_value_get_boolean(value));
  if (id == VideoAdMuted) return velto_video_ad_set_muted(self, g_value_get_boolean(value));
  bool isOther = false;
  if (id == VideoAdRefusedVendors) {
    isOther = takeVendors(priv, static_cast<char**>(g_value_get_boxed(value)));
  } else if (G_VALUE_HOLDS_STRING(value)) {
    const char* given = g_value_get_string(value);
    const auto text = given ? std::optional<std::string>(given) : std::nullopt;
    isOther = std::exchange(priv.texts[id], text) != text;
  } else {
    const auto number = G_VALUE_HOLDS_BOOLEAN(value) ? guint(g_value_get_boolean(value))
                        : G_VALUE_HOLDS_ENUM(value)  ? guint(g_value_get_enum(value))
                                                     : g_value_get_uint(value);
    isOther = std::exchange(priv.numbers[id], number) != number;
  }
  if (isOther) g_object_notify_by_pspec(object, pspec);
}

}  // namespace

VideoAdPrivate::Numbers videoAdDefaults() {
  VideoAdPrivate::Numbers numbers{};
  for (guint id = VideoAdMostWrappers; id <= VideoAdBandwidth; ++id)
    numbers[id] = G_PARAM_SPEC_UINT(properties[id])->default_value;
  numbers[VideoAdShowControls] = TRUE;
  return numbers;
}

void notifyVideoAd(VeltoVideoAd* ad, VideoAdProperty property) {
  g_object_notify_by_pspec(G_OBJECT(ad), properties[property]);
}

void addVideoAdProperties(GObjectClass* klass) {
  klass->get_property = get;
  klass->set_property = set;
  constexpr auto readable = GParamFlags(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
  constexpr auto writable = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY);
  const auto text = [&](guint id, const char* name) {
    properties[id] = g_param_spec_string(name, nullptr, nullptr, nullptr, writable);
  };
  const auto number = [&](guint id, const char* name, guint least, guint byDefault) {
    properties[id] = g_param_spec_uint(name, nullptr, nullptr, least, G_MAXINT, byDefault, writable);
  };
  const auto flag = [&](guint id, const char* name, gboolean byDefault) {
    properties[id] = g_param_spec_boolean(name, nullptr, nullptr, byDefault, writable);
  };

  /**
   * VeltoVideoAd:content-url:
   *
   * Where the application's own video is, for addresses that ask for it. Counts from the next load on.
   *
   * Since: 1.0
   */
  text(VideoAdContentUrl, "content-url");
  /**
   * VeltoVideoAd:content-id:
   *
   * What the application's own video is called, for addresses that ask for it. Counts from the next load on.
   *
   * Since: 1.0
   */
  text(VideoAdContentId, "content-id");
  /**
   * VeltoVideoAd:regulations:
   *
   * Which regulations hold, such as "gdpr", for addresses that ask for it. Counts from the next load on.
   *
   * Since: 1.0
   */
  text(VideoAdRegulations, "regulations");
  /**
   * VeltoVideoAd:most-wrappers:
   *
   * How many documents may lead to another, one inside the other. Counts from the next load on.
   *
   * Since: 1.0
   */
  number(VideoAdMostWrappers, "most-wrappers", 0, 5);
  /**
   * VeltoVideoAd:answer-timeout:
   *
   * How many seconds a server has for a document. Counts from the next load on.
   *
   * Since: 1.0
   */
  number(VideoAdAnswerTimeout, "answer-timeout", 1, 5);
  /**
   * VeltoVideoAd:load-timeout:
   *
   * How many seconds there are for all of a load. Counts from the next load on.
   *
   * Since: 1.0
   */
  number(VideoAdLoadTimeout, "load-timeout", 1, 20);
  /**
   * VeltoVideoAd:file-timeout:
   *
   * How many seconds a file has until its first picture, and for as many it may stand still; then the next one is tried. Counts from the next load on.
   *
   * Since: 1.0
   */
  number(VideoAdFileTimeout, "file-timeout", 1, 8);
  /**
   * VeltoVideoAd:max-duration:
   *
   * The longest ad to take, in seconds; 0 is any. Counts from the next load on.
   *
   * Since: 1.0
   */
  number(VideoAdMaxDuration, "max-duration", 0, 0);
  /**
   * VeltoVideoAd:bandwidth:
   *
   * What the network carries, in kilobits a second, where the application knows it; else 0. Counts from the next load on.
   *
   * Since: 1.0
   */
  number(VideoAdBandwidth, "bandwidth", 0, 0);
  /**
   * VeltoVideoAd:starts-muted:
   *
   * Whether ads begin without sound. Counts from the next load on.
   *
   * Since: 1.0
   */
  flag(VideoAdStartsMuted, "starts-muted", FALSE);
  /**
   * VeltoVideoAd:show-controls:
   *
   * Whether the library's controls lie over ads; else the application has its own. Counts from the next load on.
   *
   * Since: 1.0
   */
  flag(VideoAdShowControls, "show-controls", TRUE);
  /**
   * VeltoVideoAd:secure-files-only:
   *
   * Whether files come by https alone. Counts from the next load on.
   *
   * Since: 1.0
   */
  flag(VideoAdSecureFilesOnly, "secure-files-only", FALSE);
  /**
   * VeltoVideoAd:position:
   *
   * Where ads stand in the application's own video. Counts from the next load on.
   *
   * Since: 1.0
   */
  properties[VideoAdPosition] = g_param_spec_enum("position", nullptr, nullptr, VELTO_TYPE_VIDEO_AD_POSITION,
                                                  VELTO_VIDEO_AD_POSITION_PREROLL, writable);
  /**
   * VeltoVideoAd:refused-vendors:
   *
   * Whose verification scripts are not run. Counts from the next load on.
   *
   * Since: 1.0
   */
  properties[VideoAdRefusedVendors] =
      g_param_spec_boxed("refused-vendors", nullptr, nullptr, G_TYPE_STRV, writable);
  /**
   * VeltoVideoAd:volume: (getter get_volume) (setter set_volume)
   *
   * How loud ads are, as a share of the output volume.
   *
   * Since: 1.0
   */
  properties[VideoAdVolume] = g_param_spec_double("volume", nullptr, nullptr, 0, 1, 1, writable);
  /**
   * VeltoVideoAd:fullscreen: (getter get_fullscreen) (setter set_fullscreen)
   *
   * Whether the application's player fills the screen, which who measures is told.
   *
   * Since: 1.0
   */
  flag(VideoAdFullscreen, "fullscreen", FALSE);
  /**
   * VeltoVideoAd:muted: (getter is_muted) (setter set_muted)
   *
   * Whether ads are without sound, also since a person took it. Each load begins as [property@Velto.VideoAd:starts-muted] says.
   *
   * Since: 1.0
   */
  flag(VideoAdMuted, "muted", FALSE);
  /**
   * VeltoVideoAd:state: (getter get_state)
   *
   * What it is good for now.
   *
   * Since: 1.0
   */
  properties[VideoAdState] = g_param_spec_enum("state", nullptr, nullptr, VELTO_TYPE_VIDEO_AD_STATE,
                                               VELTO_VIDEO_AD_STATE_EMPTY, readable);
  /**
   * VeltoVideoAd:info: (getter get_info)
   *
   * What the ad that plays says of itself.
   *
   * Since: 1.0
   */
  properties[VideoAdInfo] = g_param_spec_object("info", nullptr, nullptr, VELTO_TYPE_VIDEO_AD_INFO, readable);
  g_object_class_install_properties(klass, VideoAdProperties, properties);
}

}  // namespace velto_glib
