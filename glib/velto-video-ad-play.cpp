// The video ad on the screen: played, and what is done with it there.
#include "velto-video-ad-private.h"

using namespace velto_glib;

// `begins` gives whether they play, or why they cannot.
template <class Begin>
static gboolean play(VeltoVideoAd* self, GError** error, const Begin& begins) {
  const Kept kept(self);
  const auto ad = privateOf(self).ad;
  const char* why = "no ad is ready";
  bool plays = false;
  const auto work = [&] {
    if (!ad || ad->state() != velto::VeltoVideoAd::State::Ready) return;
    why = "the window is not on the screen, or shows another screen";
    plays = begins(*ad, why);
  };
  if (!guarded(error, work, adErrorFrom)) return FALSE;
  if (!plays) g_set_error_literal(error, VELTO_AD_ERROR, VELTO_AD_ERROR_DEVELOPER, why);
  if (plays) takeVideoAdState(self);
  return plays;
}

/**
 * velto_video_ad_play_in:
 * @self: a video ad
 * @widget: (nullable): the widget to play in, such as that of the application's own video; without one there is nothing to
 *   play in, but in a test
 * @error: return location for an error of [error@Velto.AdError]
 *
 * Plays what is ready, over all of a widget. It follows the widget's place, and lies over whatever covers that.
 *
 * Returns: whether it plays
 *
 * Since: 1.0
 */
gboolean velto_video_ad_play_in(VeltoVideoAd* self, GtkWidget* widget, GError** error) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  g_return_val_if_fail(!widget || GTK_IS_WIDGET(widget), FALSE);
  g_return_val_if_fail(!error || !*error, FALSE);
  return play(self, error, [&](velto::VeltoVideoAd& ad, const char*& why) {
    const auto view = ground().hostView(G_OBJECT(self), widget, why);
    return view && ad.playIn(view);
  });
}

/**
 * velto_video_ad_play_over:
 * @self: a video ad
 * @window: (nullable): the window to cover; without one there is nothing to play over, but in a test
 * @error: return location for an error of [error@Velto.AdError]
 *
 * Plays what is ready, over all of a window.
 *
 * Returns: whether it plays
 *
 * Since: 1.0
 */
gboolean velto_video_ad_play_over(VeltoVideoAd* self, GtkWindow* window, GError** error) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  g_return_val_if_fail(!window || GTK_IS_WINDOW(window), FALSE);
  g_return_val_if_fail(!error || !*error, FALSE);
  return play(self, error, [&](velto::VeltoVideoAd& ad, const char*& why) {
    const auto over = ground().windowController(G_OBJECT(self), GTK_WIDGET(window), why);
    return over && ad.playOver(over);
  });
}

/**
 * velto_video_ad_stop:
 * @self: a video ad
 *
 * Closes all ads that play, or gives up what is on its way or ready.
 *
 * Where ads played, [signal@Velto.VideoAd::content-resume] and [signal@Velto.VideoAd::ended] follow.
 *
 * Since: 1.0
 */
void velto_video_ad_stop(VeltoVideoAd* self) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  const Kept kept(self);
  auto& priv = privateOf(self);
  priv.next = nullptr;
  priv.wantsAd = false;
  const auto answer = priv.loading.take();
  if (const auto ad = priv.ad) guarded(__func__, [&] { ad->stop(); });
  takeVideoAdState(self);
  GError* gone = videoAdGone();
  answer(gone);
  g_error_free(gone);
}

/**
 * velto_video_ad_pause:
 * @self: a video ad
 *
 * Holds the ad that plays, as its button does. [signal@Velto.VideoAd::paused] follows.
 *
 * Since: 1.0
 */
void velto_video_ad_pause(VeltoVideoAd* self) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  if (const auto ad = privateOf(self).ad) guarded(__func__, [&] { ad->pause(); });
}

/**
 * velto_video_ad_resume:
 * @self: a video ad
 *
 * Lets the ad that stands still play on. [signal@Velto.VideoAd::resumed] follows.
 *
 * Since: 1.0
 */
void velto_video_ad_resume(VeltoVideoAd* self) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  if (const auto ad = privateOf(self).ad) guarded(__func__, [&] { ad->resume(); });
}

/**
 * velto_video_ad_skip:
 * @self: a video ad
 *
 * Skips the ad that plays, where it may be skipped by now. [signal@Velto.VideoAd::skipped] follows.
 *
 * Returns: whether it is skipped
 *
 * Since: 1.0
 */
gboolean velto_video_ad_skip(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  bool skips = false;
  if (const auto ad = privateOf(self).ad) guarded(__func__, [&] { skips = ad->skip(); });
  return skips;
}

/**
 * velto_video_ad_get_state: (get-property state)
 * @self: a video ad
 *
 * Gets what it is good for now.
 *
 * Returns: the state
 *
 * Since: 1.0
 */
VeltoVideoAdState velto_video_ad_get_state(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), VeltoVideoAdState(0));
  velto_return_val_if_elsewhere(VeltoVideoAdState(0));
  return privateOf(self).state;
}

/**
 * velto_video_ad_get_info: (get-property info)
 * @self: a video ad
 *
 * Gets what the ad that plays says of itself.
 *
 * Returns: (nullable) (transfer none): what it says, or %NULL while none plays
 *
 * Since: 1.0
 */
VeltoVideoAdInfo* velto_video_ad_get_info(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return privateOf(self).info;
}

/**
 * velto_video_ad_get_current_time:
 * @self: a video ad
 *
 * Gets how much of the ad has been played.
 *
 * Returns: seconds
 *
 * Since: 1.0
 */
double velto_video_ad_get_current_time(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), 0);
  velto_return_val_if_elsewhere(0);
  const auto ad = privateOf(self).ad;
  return ad ? ad->currentTime() : 0;
}

/**
 * velto_video_ad_get_companions:
 * @self: a video ad
 *
 * Gets what belongs beside the player, from the start of an ad to that of the next one.
 *
 * They are the same widgets at each call. An ad that is not shown to its end has them, too.
 *
 * Returns: (transfer container) (element-type VeltoVideoAdCompanion): widgets, each to be put where there is room for it
 *
 * Since: 1.0
 */
GList* velto_video_ad_get_companions(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  auto& priv = privateOf(self);
  if (!priv.ad || !priv.companionsOf || !isLatest(*priv.ad, priv.companionsOf)) return nullptr;
  const auto make = [&] {
    size_t place = 0;
    for (auto& each : priv.ad->companions()) {
      auto* made = makeCompanion(priv.ad, priv.companionsOf, place++, std::move(each));
      priv.companions.push_back(GTK_WIDGET(g_object_ref_sink(made)));
    }
  };
  if (priv.companions.empty()) guarded(__func__, make);
  GList* list = nullptr;
  for (auto* each : priv.companions) list = g_list_prepend(list, each);
  return g_list_reverse(list);
}

/**
 * velto_video_ad_is_muted: (get-property muted)
 * @self: a video ad
 *
 * Gets whether ads are without sound.
 *
 * Returns: whether they are
 *
 * Since: 1.0
 */
gboolean velto_video_ad_is_muted(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return privateOf(self).numbers[VideoAdMuted] != 0;
}

/**
 * velto_video_ad_set_muted: (set-property muted)
 * @self: a video ad
 * @muted: whether they are without sound
 *
 * Takes the sound from ads, or gives it back, also while they play. A person may do the same, and each load begins as
 * [property@Velto.VideoAd:starts-muted] says.
 *
 * Since: 1.0
 */
void velto_video_ad_set_muted(VeltoVideoAd* self, gboolean muted) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  auto& priv = privateOf(self);
  const guint number = muted != FALSE;
  if (std::exchange(priv.numbers[VideoAdMuted], number) == number) return;
  if (const auto ad = priv.ad) guarded(__func__, [&] { ad->setMuted(number != 0); });
  notifyVideoAd(self, VideoAdMuted);
}

/**
 * velto_video_ad_get_volume: (get-property volume)
 * @self: a video ad
 *
 * Gets how loud ads are.
 *
 * Returns: a share of the output volume, 0 to 1
 *
 * Since: 1.0
 */
double velto_video_ad_get_volume(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), 0);
  velto_return_val_if_elsewhere(0);
  return privateOf(self).volume;
}

/**
 * velto_video_ad_set_volume: (set-property volume)
 * @self: a video ad
 * @volume: a share of the output volume, 0 to 1
 *
 * Sets how loud ads are, also those that play.
 *
 * Since: 1.0
 */
void velto_video_ad_set_volume(VeltoVideoAd* self, double volume) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  g_return_if_fail(volume >= 0 && volume <= 1);
  auto& priv = privateOf(self);
  if (std::exchange(priv.volume, volume) == volume) return;
  if (const auto ad = priv.ad) guarded(__func__, [&] { ad->setVolume(float(volume)); });
  notifyVideoAd(self, VideoAdVolume);
}

/**
 * velto_video_ad_get_fullscreen: (get-property fullscreen)
 * @self: a video ad
 *
 * Gets whether the application's player fills the screen.
 *
 * Returns: whether it does
 *
 * Since: 1.0
 */
gboolean velto_video_ad_get_fullscreen(VeltoVideoAd* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return privateOf(self).numbers[VideoAdFullscreen] != 0;
}

/**
 * velto_video_ad_set_fullscreen: (set-property fullscreen)
 * @self: a video ad
 * @fullscreen: whether it does
 *
 * Tells that the application's player fills the screen, or does so no more.
 *
 * Since: 1.0
 */
void velto_video_ad_set_fullscreen(VeltoVideoAd* self, gboolean fullscreen) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  auto& priv = privateOf(self);
  const guint number = fullscreen != FALSE;
  if (std::exchange(priv.numbers[VideoAdFullscreen], number) == number) return;
  if (const auto ad = priv.ad) guarded(__func__, [&] { ad->setFullscreen(number != 0); });
  notifyVideoAd(self, VideoAdFullscreen);
}
