// The banner's ad: asked for, heard of, let go.
#include <array>

#include "velto-banner-private.h"
#include "velto-placement-private.h"

namespace velto_glib {
namespace {

bool isShown(VeltoBannerState state) {
  return state >= VELTO_BANNER_STATE_SHOWN;
}

const char* styleClass(VeltoBannerState state) {
  static constexpr std::array names{"empty", "loading", "shown", "expanded", "resized"};
  return names[size_t(state)];
}

// What was waited for is here, or will not come.
void conclude(VeltoBanner* banner, const GError* error) {
  const Kept kept(banner);
  auto& priv = privateOf(banner);
  priv.wantsAd = false;
  const auto answer = priv.waiting.take();
  emitBanner(banner, error ? BannerSignal::Failed : BannerSignal::Loaded, error);
  answer(error);
}

// A page may give up without a word, which leaves the banner empty.
gboolean giveUp(gpointer data) noexcept {
  auto* banner = VELTO_BANNER(data);
  auto& priv = privateOf(banner);
  priv.givingUp = 0;
  if (priv.state != VELTO_BANNER_STATE_EMPTY || (priv.waiting.isEmpty() && !priv.wantsAd))
    return G_SOURCE_REMOVE;
  GError* error = errorFrom(whyLost(priv.ad));
  conclude(banner, error);
  g_error_free(error);
  return G_SOURCE_REMOVE;
}

void takeState(VeltoBanner* banner) {
  auto& priv = privateOf(banner);
  const auto state = priv.ad ? VeltoBannerState(priv.ad->state()) : VELTO_BANNER_STATE_EMPTY;
  const auto size = priv.ad ? priv.ad->adSize() : velto::CGSize{};
  const auto before = std::exchange(priv.state, state);
  const int width = std::exchange(priv.adWidth, int(size.width));
  const int height = std::exchange(priv.adHeight, int(size.height));
  const Kept kept(banner);
  if (before != state) {
    gtk_widget_remove_css_class(GTK_WIDGET(banner), styleClass(before));
    gtk_widget_add_css_class(GTK_WIDGET(banner), styleClass(state));
    gtk_widget_action_set_enabled(GTK_WIDGET(banner), "banner.clear", state != VELTO_BANNER_STATE_EMPTY);
    if (state == VELTO_BANNER_STATE_EMPTY && !priv.givingUp) priv.givingUp = g_idle_add(giveUp, banner);
  }
  g_object_freeze_notify(G_OBJECT(banner));
  if (before != state) notifyBanner(banner, BannerState);
  if (width != priv.adWidth) notifyBanner(banner, BannerAdWidth);
  if (height != priv.adHeight) notifyBanner(banner, BannerAdHeight);
  g_object_thaw_notify(G_OBJECT(banner));
  if (isShown(before) && !isShown(state)) emitBanner(banner, BannerSignal::Removed);
}

}  // namespace

class BannerDelegate final : public velto::VeltoBannerViewControllerDelegate {
 public:
  using Controller = velto::VeltoBannerViewControllerPrivate;

  explicit BannerDelegate(VeltoBanner* banner) : banner_(banner) {}
  void forget() { banner_ = nullptr; }

  std::shared_ptr<velto::UIViewController> presentViewController() override {
    auto* slot = banner_ ? privateOf(banner_).slot : nullptr;
    return slot ? ground().slotController(slot) : nullptr;
  }
  void veltoBannerViewControllerDidFinishLoad(Controller&) override {
    if (banner_) conclude(banner_, nullptr);
  }
  void veltoBannerViewControllerDidPress(Controller&) override {
    if (banner_) emitBanner(banner_, BannerSignal::Pressed);
  }
  void veltoBannerViewControllerDidFail(Controller&, const velto::VeltoErrorAd& withError) override {
    if (!banner_) return;
    GError* error = errorFrom(withError);
    conclude(banner_, error);
    g_error_free(error);
  }
  // Another network's ad has had its time.
  void veltoBannerViewControllerDidClose(Controller&) override {
    if (const auto ad = banner_ ? privateOf(banner_).ad : nullptr) ad->removeBanner();
  }
  void veltoBannerViewControllerDidChangeState(Controller&) override {
    if (banner_) takeState(banner_);
  }

 private:
  VeltoBanner* banner_;  // null once it is disposed of
};

BannerPrivate::BannerPrivate(VeltoBanner* banner)
    : delegate(std::make_shared<BannerDelegate>(banner)), waiting([banner] {
        auto& priv = privateOf(banner);
        const bool isWanted = priv.wantsAd || !priv.waiting.isEmpty();
        if (!isWanted && priv.state == VELTO_BANNER_STATE_LOADING) velto_banner_clear(banner);
      }) {}

BannerPrivate::~BannerPrivate() = default;

void passOnValues(const BannerPrivate& priv) {
  if (!priv.ad) return;
  priv.ad->setAnimation(velto::VeltoAnimation(priv.animation));
  priv.ad->setPlacement(priv.placement.value_or("banner"));
  priv.ad->setHeavyAdPolicy(velto::VeltoHeavyAdPolicy(priv.heavyAdPolicy));
  priv.ad->setEnableAutoRefresh(priv.autoRefresh);
  priv.ad->setRefreshTimeSeconds(priv.refreshInterval);
}

// Throws as hostViewController() does.
void loadBanner(VeltoBanner* banner) {
  auto& priv = privateOf(banner);
  if (!priv.ad) {
    priv.ad = velto::VeltoBannerViewController::initWithDelegate(
        priv.delegate, velto::VeltoBannerSize(priv.size), velto::VeltoBannerPositionTop);
    priv.ad->setRefreshPaused(!gtk_widget_get_mapped(GTK_WIDGET(banner)));
  }
  const auto ad = priv.ad;  // also when a handler clears the banner
  ad->setSize(velto::VeltoBannerSize(priv.size));
  passOnValues(priv);
  ad->load(settingsFrom(priv.targeting));
}

void letBannerGo(VeltoBanner* banner) {
  auto& priv = privateOf(banner);
  priv.delegate->forget();
  priv.ad.reset();
  priv.state = VELTO_BANNER_STATE_EMPTY;
  priv.adWidth = priv.adHeight = 0;
  for (guint* source : {&priv.givingUp, &priv.seen})
    if (*source) g_source_remove(std::exchange(*source, 0));
  GError* gone = errorFrom(velto::VeltoErrorAd::veltoErrorAdWithCode(velto::VeltoErrorCancelled));
  priv.waiting.take()(gone);
  g_error_free(gone);
}

}  // namespace velto_glib

using namespace velto_glib;

static void begin_load(VeltoBanner* self) {
  const auto load = [&] { loadBanner(self); };
  GError* error = nullptr;
  if (guarded(&error, load, adErrorFrom)) return;
  conclude(self, error);
  g_error_free(error);
}

/**
 * velto_banner_load:
 * @self: a banner
 *
 * Loads an ad, in place of the one that is shown.
 *
 * [signal@Velto.Banner::loaded] or [signal@Velto.Banner::failed] tells how it went.
 *
 * Since: 1.0
 */
void velto_banner_load(VeltoBanner* self) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  if (!isStarted(__func__)) return;
  g_return_if_fail(privateOf(self).slot);
  const Kept kept(self);
  privateOf(self).wantsAd = true;
  begin_load(self);
}

/**
 * velto_banner_load_async:
 * @self: a banner
 * @cancellable: (nullable): a cancellable
 * @callback: (scope async): called when the ad is shown, or did not come
 * @user_data: user data for @callback
 *
 * Loads an ad, in place of the one that is shown, and tells how it went.
 *
 * Whoever asks while an ad is on its way hears of that one. When the last one to wait calls it off, a banner that shows no ad
 * yet gives it up; in the place of an ad that is shown, it comes all the same.
 *
 * Since: 1.0
 */
void velto_banner_load_async(VeltoBanner* self, GCancellable* cancellable, GAsyncReadyCallback callback,
                             gpointer user_data) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  g_return_if_fail(!cancellable || G_IS_CANCELLABLE(cancellable));
  velto_return_if_elsewhere();
  auto* task = g_task_new(self, cancellable, callback, user_data);
  g_task_set_source_tag(task, gpointer(velto_banner_load_async));
  g_task_set_name(task, "velto_banner_load_async");
  auto& priv = privateOf(self);
  if (!velto_client_get_default()) {
    g_task_return_new_error(task, VELTO_CLIENT_ERROR, VELTO_CLIENT_ERROR_NOT_READY,
                            "no ads without a client: call velto_client_start() before");
    return g_object_unref(task);
  }
  if (!priv.slot) {
    g_task_return_new_error(task, VELTO_AD_ERROR, VELTO_AD_ERROR_CANCELLED, "the banner was destroyed");
    return g_object_unref(task);
  }
  if (g_task_return_error_if_cancelled(task)) return g_object_unref(task);
  const bool isLoading = priv.wantsAd && priv.state == VELTO_BANNER_STATE_LOADING;
  const bool isOnItsWay = isLoading || !priv.waiting.isEmpty();
  priv.waiting.add(task);
  if (isOnItsWay) return;
  const Kept kept(self);
  begin_load(self);
}

/**
 * velto_banner_load_finish:
 * @self: a banner
 * @result: what the callback was given
 * @error: return location for an error of [error@Velto.AdError] or [error@Gio.IOErrorEnum]
 *
 * Ends what [method@Velto.Banner.load_async] began.
 *
 * Returns: whether an ad is shown
 *
 * Since: 1.0
 */
gboolean velto_banner_load_finish(VeltoBanner* self, GAsyncResult* result, GError** error) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  g_return_val_if_fail(g_task_is_valid(result, self), FALSE);
  return g_task_propagate_boolean(G_TASK(result), error);
}

/**
 * velto_banner_clear:
 * @self: a banner
 *
 * Takes the ad away, and gives up one that is on its way.
 *
 * Since: 1.0
 */
void velto_banner_clear(VeltoBanner* self) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  const Kept kept(self);
  auto& priv = privateOf(self);
  priv.ad.reset();
  priv.wantsAd = false;
  const auto answer = priv.waiting.take();
  takeState(self);
  GError* gone = errorFrom(velto::VeltoErrorAd::veltoErrorAdWithCode(velto::VeltoErrorCancelled));
  answer(gone);
  g_error_free(gone);
}
