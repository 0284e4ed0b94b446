// The video ad itself: asked for, heard of, let go.
#include <velto/platform/Platform.h>

#include "velto-video-ad-private.h"

namespace velto_glib {
namespace {

bool isOnTheScreen(const VideoAdPrivate& priv) {
  return priv.ad && priv.ad->state() == velto::VeltoVideoAd::State::Playing;
}

void letCompanionsGo(VideoAdPrivate& priv) {
  priv.companionsOf = 0;
  for (auto* companion : std::exchange(priv.companions, {})) {
    letCompanionGo(companion);
    g_object_unref(companion);
  }
}

// A load has its outcome: no error is success. Takes the error over.
void conclude(VeltoVideoAd* ad, GError* error) {
  const Kept kept(ad);
  auto& priv = privateOf(ad);
  priv.wantsAd = false;
  const auto answer = priv.loading.take();
  takeVideoAdInfo(ad, nullptr);
  takeVideoAdState(ad);
  emitVideoAd(ad, error ? VideoAdSignal::Failed : VideoAdSignal::Loaded, error);
  answer(error);
  g_clear_error(&error);
}

gboolean giveUp(gpointer data) noexcept {
  auto* ad = VELTO_VIDEO_AD(data);
  const Kept kept(ad);
  auto& priv = privateOf(ad);
  priv.givingUp = 0;
  if (priv.wantsAd || !priv.loading.isEmpty()) {
    conclude(ad, videoAdGone());
  } else {
    takeVideoAdInfo(ad, nullptr);
    takeVideoAdState(ad);
  }
  return G_SOURCE_REMOVE;
}

// Nothing is heard of it any more, and the next load needs another one. Told when the next platform may be there.
void loseWithPlatform(VeltoVideoAd* ad) {
  auto& priv = privateOf(ad);
  priv.platformGoes.cancel();
  priv.ad.reset();
  priv.next = nullptr;
  letCompanionsGo(priv);
  if (!priv.givingUp) priv.givingUp = g_idle_add(giveUp, ad);
}

}  // namespace

class VideoAdDelegate final : public velto::VeltoVideoAdDelegate {
 public:
  using Ad = velto::VeltoVideoAd;

  explicit VideoAdDelegate(VeltoVideoAd* ad) : ad_(ad) {}
  void forget() { ad_ = nullptr; }

  void veltoVideoAdDidLoad(Ad&) override {
    if (ad_) conclude(ad_, nullptr);
  }
  void veltoVideoAdDidFail(Ad& ad, const velto::VeltoVideoAdError& withError) override {
    if (!ad_) return;
    auto* error = g_error_new_literal(VELTO_VIDEO_AD_ERROR, withError.code, withError.explanation.c_str());
    if (ad.state() != Ad::State::Playing) return conclude(ad_, error);
    auto& priv = privateOf(ad_);
    if (!isLatest(ad, priv.companionsOf)) letCompanionsGo(priv);  // this one took the place of who has them
    tell(VideoAdSignal::Failed, error);
    g_error_free(error);
  }
  void veltoVideoAdDidRequestContentPause(Ad&) override {
    if (ad_) letCompanionsGo(privateOf(ad_));
    tell(VideoAdSignal::ContentPause);
  }
  void veltoVideoAdDidStart(Ad&, const velto::VeltoVideoAdInfo& info) override {
    if (!ad_) return;
    const Kept kept(ad_);
    letCompanionsGo(privateOf(ad_));
    privateOf(ad_).companionsOf = info.number;
    auto* made = videoAdInfoFrom(info);
    takeVideoAdInfo(ad_, VELTO_VIDEO_AD_INFO(g_object_ref(made)));
    tell(VideoAdSignal::Started, made);
    g_object_unref(made);
  }
  void veltoVideoAdDidPass(Ad&, velto::VeltoVideoAdQuartile quartile) override {
    tell(VideoAdSignal::Quartile, GINT_TO_POINTER(int(quartile)));
  }
  void veltoVideoAdDidPause(Ad&) override { tell(VideoAdSignal::Paused); }
  void veltoVideoAdDidResume(Ad&) override { tell(VideoAdSignal::Resumed); }
  void veltoVideoAdDidChangeMuted(Ad&, bool) override {
    if (ad_) takeVideoAdState(ad_);
  }
  void veltoVideoAdDidPress(Ad&) override { tell(VideoAdSignal::Pressed); }
  void veltoVideoAdDidSkip(Ad&) override { tell(VideoAdSignal::Skipped); }
  void veltoVideoAdDidComplete(Ad&) override { tell(VideoAdSignal::Completed); }
  void veltoVideoAdDidRequestContentResume(Ad&) override { tell(VideoAdSignal::ContentResume); }
  void veltoVideoAdDidEndAll(Ad&) override {
    if (!ad_) return;
    const Kept kept(ad_);
    auto& priv = privateOf(ad_);
    takeVideoAdInfo(ad_, nullptr);
    tell(VideoAdSignal::Ended);
    if (const auto next = std::exchange(priv.next, nullptr)) next();
  }

 private:
  void tell(VideoAdSignal signal, gpointer with = nullptr) {
    if (!ad_) return;
    auto* ad = ad_;
    const Kept kept(ad);
    takeVideoAdState(ad);
    emitVideoAd(ad, signal, with);
  }

  VeltoVideoAd* ad_;  // null once it is disposed of
};

namespace {

using Load = std::function<void(velto::VeltoVideoAd&)>;

// Now, or after what plays.
void begin(VeltoVideoAd* ad, const Load& how) {
  const Kept kept(ad);
  auto& priv = privateOf(ad);
  priv.next = nullptr;
  g_clear_handle_id(&priv.givingUp, g_source_remove);
  if (isOnTheScreen(priv)) {
    priv.next = [ad, how] { begin(ad, how); };
    return;
  }
  GError* error = nullptr;
  const auto ask = [&] {
    if (!priv.ad) {
      priv.ad = velto::VeltoVideoAd::make(priv.delegate);
      priv.ad->setFullscreen(priv.numbers[VideoAdFullscreen] != 0);
      priv.platformGoes = velto::Platform::current().notificationCenter().addObserver(
          velto::notificationPlatformWillGo, [ad](const auto&) { loseWithPlatform(ad); });
    }
    const auto of = priv.ad;
    of->setSettings(settingsOf(priv));
    how(*of);
  };
  if (!guarded(&error, ask, adErrorFrom)) return conclude(ad, error);
  takeVideoAdState(ad);
}

}  // namespace

VideoAdPrivate::VideoAdPrivate(VeltoVideoAd* of)
    : delegate(std::make_shared<VideoAdDelegate>(of)), numbers(videoAdDefaults()), loading([of] {
        auto& priv = privateOf(of);
        if (priv.wantsAd || !priv.loading.isEmpty()) return;
        priv.next = nullptr;
        if (priv.state == VELTO_VIDEO_AD_STATE_LOADING) velto_video_ad_stop(of);
      }) {}

VideoAdPrivate::~VideoAdPrivate() {
  g_strfreev(refusedVendors);
}

velto::VeltoVideoAdSettings settingsOf(const VideoAdPrivate& priv) {
  const auto& numbers = priv.numbers;
  const auto text = [&](VideoAdProperty property) { return priv.texts[property].value_or(""); };
  const auto optional = [](guint number) { return number ? std::optional<double>(number) : std::nullopt; };
  velto::VeltoVideoAdSettings settings;
  settings.position = velto::VeltoVideoAdPosition(numbers[VideoAdPosition]);
  settings.startsMuted = numbers[VideoAdStartsMuted] != 0;
  settings.volume = float(priv.volume);
  settings.showsControls = numbers[VideoAdShowControls] != 0;
  settings.mostWrappers = numbers[VideoAdMostWrappers];
  settings.answerTimeout = std::chrono::seconds(numbers[VideoAdAnswerTimeout]);
  settings.loadTimeout = std::chrono::seconds(numbers[VideoAdLoadTimeout]);
  settings.fileTimeout = std::chrono::seconds(numbers[VideoAdFileTimeout]);
  settings.longest = optional(numbers[VideoAdMaxDuration]);
  settings.bandwidth = optional(numbers[VideoAdBandwidth]);
  settings.onlySecureFiles = numbers[VideoAdSecureFilesOnly] != 0;
  settings.contentURL = text(VideoAdContentUrl);
  settings.contentIdentifier = text(VideoAdContentId);
  settings.regulations = text(VideoAdRegulations);
  auto* client = velto_client_get_default();
  const char* consent = client ? velto_client_get_gdpr_consent(client) : nullptr;
  settings.consent = consent ? consent : "";
  for (char** vendor = priv.refusedVendors; vendor && *vendor; ++vendor)
    settings.refusedVendors.emplace_back(*vendor);
  return settings;
}

GError* videoAdGone() {
  return errorFrom(velto::VeltoErrorAd::veltoErrorAdWithCode(velto::VeltoErrorCancelled));
}

void takeVideoAdState(VeltoVideoAd* ad) {
  const Kept kept(ad);
  auto& priv = privateOf(ad);
  auto state = priv.ad ? VeltoVideoAdState(priv.ad->state()) : VELTO_VIDEO_AD_STATE_EMPTY;
  if (isOnTheScreen(priv) && priv.ad->isPaused()) state = VELTO_VIDEO_AD_STATE_PAUSED;
  const guint muted = priv.ad ? guint(priv.ad->isMuted()) : priv.numbers[VideoAdMuted];
  const bool isOther = std::exchange(priv.numbers[VideoAdMuted], muted) != muted;
  if (std::exchange(priv.state, state) != state) notifyVideoAd(ad, VideoAdState);
  if (isOther) notifyVideoAd(ad, VideoAdMuted);
}

void takeVideoAdInfo(VeltoVideoAd* ad, VeltoVideoAdInfo* info) {
  auto* before = std::exchange(privateOf(ad).info, info);
  if (before != info) notifyVideoAd(ad, VideoAdInfo);
  g_clear_object(&before);
}

void letVideoAdGo(VeltoVideoAd* ad) {
  auto& priv = privateOf(ad);
  if (priv.delegate) priv.delegate->forget();
  priv.delegate.reset();
  priv.platformGoes.cancel();
  g_clear_handle_id(&priv.givingUp, g_source_remove);
  priv.ad.reset();
  priv.next = nullptr;
  priv.wantsAd = false;
  priv.state = VELTO_VIDEO_AD_STATE_EMPTY;
  letCompanionsGo(priv);
  g_clear_object(&priv.info);
  GError* gone = videoAdGone();
  priv.loading.take()(gone);
  g_error_free(gone);
}

}  // namespace velto_glib

using namespace velto_glib;

// Takes the place of what is on its way, whose callers hear that it was given up. The task may be null.
static void load(VeltoVideoAd* self, GTask* task, const Load& how) {
  auto& priv = privateOf(self);
  const Kept kept(self);
  const auto before = priv.loading.take();
  priv.wantsAd = !task;
  if (task) priv.loading.add(task);
  begin(self, how);
  GError* gone = videoAdGone();
  before(gone);
  g_error_free(gone);
}

static Load from_address(const char* address) {
  return [text = std::string(address)](velto::VeltoVideoAd& ad) { ad.load(text); };
}

static Load from_document(const char* document) {
  return [text = std::string(document)](velto::VeltoVideoAd& ad) { ad.loadDocument(text); };
}

// Null where it has its answer already.
static GTask* new_task(VeltoVideoAd* self, GCancellable* cancellable, GAsyncReadyCallback callback,
                       gpointer user_data, gpointer tag, const char* name) {
  auto* task = g_task_new(self, cancellable, callback, user_data);
  g_task_set_source_tag(task, tag);
  g_task_set_name(task, name);
  if (!velto_client_get_default())
    g_task_return_new_error(task, VELTO_CLIENT_ERROR, VELTO_CLIENT_ERROR_NOT_READY,
                            "no ads without a client: call velto_client_start() before");
  else if (!privateOf(self).delegate)
    g_task_return_error(task, videoAdGone());
  else if (!g_task_return_error_if_cancelled(task))
    return task;
  g_object_unref(task);
  return nullptr;
}

/**
 * velto_video_ad_load:
 * @self: a video ad
 * @address: where its document is to be had
 *
 * Loads ads.
 *
 * They take the place of what is on its way or ready; while ads play, they are loaded when those are over.
 * [signal@Velto.VideoAd::loaded] or [signal@Velto.VideoAd::failed] tells how it went.
 *
 * Since: 1.0
 */
void velto_video_ad_load(VeltoVideoAd* self, const char* address) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  if (!isStarted(__func__)) return;
  g_return_if_fail(address);
  g_return_if_fail(privateOf(self).delegate);
  load(self, nullptr, from_address(address));
}

/**
 * velto_video_ad_load_async:
 * @self: a video ad
 * @address: where its document is to be had
 * @cancellable: (nullable): a cancellable
 * @callback: (scope async): called when ads are ready, or there are none
 * @user_data: user data for @callback
 *
 * Loads ads as [method@Velto.VideoAd.load] does, and tells how it went.
 *
 * Since: 1.0
 */
void velto_video_ad_load_async(VeltoVideoAd* self, const char* address, GCancellable* cancellable,
                               GAsyncReadyCallback callback, gpointer user_data) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  g_return_if_fail(!cancellable || G_IS_CANCELLABLE(cancellable));
  velto_return_if_elsewhere();
  g_return_if_fail(address);
  auto* task =
      new_task(self, cancellable, callback, user_data, gpointer(velto_video_ad_load_async), __func__);
  if (task) load(self, task, from_address(address));
}

/**
 * velto_video_ad_load_finish:
 * @self: a video ad
 * @result: what the callback was given
 * @error: return location for an error of [error@Velto.VideoAdError], [error@Velto.AdError] or [error@Gio.IOErrorEnum]
 *
 * Ends what [method@Velto.VideoAd.load_async] began.
 *
 * Returns: whether ads are ready
 *
 * Since: 1.0
 */
gboolean velto_video_ad_load_finish(VeltoVideoAd* self, GAsyncResult* result, GError** error) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  g_return_val_if_fail(g_task_is_valid(result, self), FALSE);
  return g_task_propagate_boolean(G_TASK(result), error);
}

/**
 * velto_video_ad_load_document:
 * @self: a video ad
 * @document: a document (VAST)
 *
 * Loads ads from a document that the application has. Else as [method@Velto.VideoAd.load].
 *
 * Since: 1.0
 */
void velto_video_ad_load_document(VeltoVideoAd* self, const char* document) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  velto_return_if_elsewhere();
  if (!isStarted(__func__)) return;
  g_return_if_fail(document);
  g_return_if_fail(privateOf(self).delegate);
  load(self, nullptr, from_document(document));
}

/**
 * velto_video_ad_load_document_async:
 * @self: a video ad
 * @document: a document (VAST)
 * @cancellable: (nullable): a cancellable
 * @callback: (scope async): called when ads are ready, or there are none
 * @user_data: user data for @callback
 *
 * Loads ads as [method@Velto.VideoAd.load_document] does, and tells how it went.
 *
 * Since: 1.0
 */
void velto_video_ad_load_document_async(VeltoVideoAd* self, const char* document, GCancellable* cancellable,
                                        GAsyncReadyCallback callback, gpointer user_data) {
  g_return_if_fail(VELTO_IS_VIDEO_AD(self));
  g_return_if_fail(!cancellable || G_IS_CANCELLABLE(cancellable));
  velto_return_if_elsewhere();
  g_return_if_fail(document);
  auto* task = new_task(self, cancellable, callback, user_data, gpointer(velto_video_ad_load_document_async),
                        __func__);
  if (task) load(self, task, from_document(document));
}

/**
 * velto_video_ad_load_document_finish:
 * @self: a video ad
 * @result: what the callback was given
 * @error: return location for an error of [error@Velto.VideoAdError], [error@Velto.AdError] or [error@Gio.IOErrorEnum]
 *
 * Ends what [method@Velto.VideoAd.load_document_async] began.
 *
 * Returns: whether ads are ready
 *
 * Since: 1.0
 */
gboolean velto_video_ad_load_document_finish(VeltoVideoAd* self, GAsyncResult* result, GError** error) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  g_return_val_if_fail(g_task_is_valid(result, self), FALSE);
  return g_task_propagate_boolean(G_TASK(result), error);
}
