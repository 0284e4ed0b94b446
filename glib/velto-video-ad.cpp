// The video ad as an object.
#include "velto-video-ad-private.h"

using namespace velto_glib;

struct _VeltoVideoAd {
  GObject parent_instance;
  VideoAdPrivate* priv;
};

/**
 * VeltoVideoAd:
 *
 * Video ads, one or several in a row, in an application's own player or over its window.
 *
 * They are loaded ahead of time, and played when their turn has come:
 *
 * ```python
 * ad = Velto.VideoAd(position=Velto.VideoAdPosition.PREROLL)
 * ad.connect("content-pause", lambda ad: film.pause())
 * ad.connect("content-resume", lambda ad: film.play())
 * ad.connect("loaded", lambda ad: ad.play_in(stage))
 * ad.connect("failed", lambda ad, error: print("no ad:", error.code, error.message))
 * ad.load(address)
 * ```
 *
 * The document that stands at the address (VAST) says what is played, what its servers are told, and how it is measured.
 * [class@Velto.VastRequest] makes such addresses. What cannot be played is passed over.
 *
 * Whoever lets go of the object takes its ads off the screen.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoVideoAd, velto_video_ad, G_TYPE_OBJECT)

static guint signals[int(VideoAdSignal::Count)];

static void velto_video_ad_dispose(GObject* object) {
  letVideoAdGo(VELTO_VIDEO_AD(object));
  G_OBJECT_CLASS(velto_video_ad_parent_class)->dispose(object);
}

static void velto_video_ad_finalize(GObject* object) {
  delete VELTO_VIDEO_AD(object)->priv;
  G_OBJECT_CLASS(velto_video_ad_parent_class)->finalize(object);
}

static void velto_video_ad_class_init(VeltoVideoAdClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->dispose = velto_video_ad_dispose;
  object_class->finalize = velto_video_ad_finalize;
  addVideoAdProperties(object_class);

  const auto add = [](VideoAdSignal signal, const char* name, guint count = 0,
                      GType parameter = G_TYPE_NONE) {
    signals[int(signal)] = g_signal_new(name, VELTO_TYPE_VIDEO_AD, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr,
                                        nullptr, G_TYPE_NONE, count, parameter);
  };
  /**
   * VeltoVideoAd::loaded:
   * @self: the video ad
   *
   * There is something to play.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Loaded, "loaded");
  /**
   * VeltoVideoAd::failed:
   * @self: the video ad
   * @error: why, an error of [error@Velto.VideoAdError] or [error@Velto.AdError]
   *
   * There is nothing to play; or, while ads play, one of them cannot be, and the next one follows.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Failed, "failed", 1, G_TYPE_ERROR);
  /**
   * VeltoVideoAd::content-pause:
   * @self: the video ad
   *
   * Ads are about to play: the application's own video pauses, also if no ad follows.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::ContentPause, "content-pause");
  /**
   * VeltoVideoAd::content-resume:
   * @self: the video ad
   *
   * The ads are over or were closed, and are on the screen no more: the application's own video goes on.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::ContentResume, "content-resume");
  /**
   * VeltoVideoAd::started:
   * @self: the video ad
   * @info: what the ad says of itself
   *
   * The first picture of an ad is there.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Started, "started", 1, VELTO_TYPE_VIDEO_AD_INFO);
  /**
   * VeltoVideoAd::quartile:
   * @self: the video ad
   * @quartile: how far
   *
   * The ad has been played so far.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Quartile, "quartile", 1, VELTO_TYPE_VIDEO_AD_QUARTILE);
  /**
   * VeltoVideoAd::paused:
   * @self: the video ad
   *
   * The ad stands still, by whomever, also since nobody can see it.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Paused, "paused");
  /**
   * VeltoVideoAd::resumed:
   * @self: the video ad
   *
   * The ad that stood still plays on.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Resumed, "resumed");
  /**
   * VeltoVideoAd::pressed:
   * @self: the video ad
   *
   * A person pressed the ad, or what opens its place.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Pressed, "pressed");
  /**
   * VeltoVideoAd::skipped:
   * @self: the video ad
   *
   * A person has skipped the ad.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Skipped, "skipped");
  /**
   * VeltoVideoAd::completed:
   * @self: the video ad
   *
   * The ad has been played to its end.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Completed, "completed");
  /**
   * VeltoVideoAd::ended:
   * @self: the video ad
   *
   * All is over: this is the last that is heard of what was loaded.
   *
   * Since: 1.0
   */
  add(VideoAdSignal::Ended, "ended");
}

static void velto_video_ad_init(VeltoVideoAd* self) {
  self->priv = new VideoAdPrivate(self);
}

namespace velto_glib {

VideoAdPrivate& privateOf(VeltoVideoAd* ad) {
  return *ad->priv;
}

void emitVideoAd(VeltoVideoAd* ad, VideoAdSignal signal, gpointer with) {
  if (signal == VideoAdSignal::Quartile)
    g_signal_emit(ad, signals[int(signal)], 0, GPOINTER_TO_INT(with));
  else
    g_signal_emit(ad, signals[int(signal)], 0, with);
}

}  // namespace velto_glib

/**
 * velto_video_ad_error_quark:
 *
 * Gets the domain of [error@Velto.VideoAdError].
 *
 * Returns: the domain
 *
 * Since: 1.0
 */
GQuark velto_video_ad_error_quark() {
  return g_quark_from_static_string("velto-video-ad-error-quark");
}

/**
 * velto_video_ad_new:
 *
 * Creates a video ad that is empty.
 *
 * Returns: (transfer full): a new video ad
 *
 * Since: 1.0
 */
VeltoVideoAd* velto_video_ad_new() {
  velto_return_val_if_elsewhere(nullptr);
  return VELTO_VIDEO_AD(g_object_new(VELTO_TYPE_VIDEO_AD, nullptr));
}
