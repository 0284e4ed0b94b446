// The interstitial's ad: asked for, presented, heard of, let go.
#include "velto-interstitial-private.h"
#include "velto-placement-private.h"

namespace velto_glib {
namespace {

// An error with words of our own.
GError* refusal(const char* why) {
  return g_error_new_literal(VELTO_AD_ERROR, VELTO_AD_ERROR_DEVELOPER, why);
}

GError* cancelled() {
  return errorFrom(velto::VeltoErrorAd::veltoErrorAdWithCode(velto::VeltoErrorCancelled));
}

// Tells that it failed, and those who wait; takes the error over.
void fail(VeltoInterstitial* interstitial, Waiting& waiting, GError* error) {
  const Kept kept(interstitial);
  const auto answer = waiting.take();
  emitInterstitial(interstitial, InterstitialSignal::Failed, error);
  answer(error);
  g_error_free(error);
}

bool isWanted(const InterstitialPrivate& priv) {
  return priv.wantsAd || !priv.loading.isEmpty();
}

// An answer may get lost, which leaves the interstitial empty; and a page may give up without a word before it is seen.
gboolean giveUp(gpointer data) noexcept {
  auto* interstitial = VELTO_INTERSTITIAL(data);
  auto& priv = privateOf(interstitial);
  priv.givingUp = 0;
  const auto lost = whyLost(priv.ad);
  const Kept kept(interstitial);
  if (priv.state != VELTO_INTERSTITIAL_STATE_PRESENTED && std::exchange(priv.rising, false))
    fail(interstitial, priv.presenting, errorFrom(lost));
  if (priv.state != VELTO_INTERSTITIAL_STATE_EMPTY || !isWanted(priv)) return G_SOURCE_REMOVE;
  priv.wantsAd = false;
  fail(interstitial, priv.loading, errorFrom(lost));
  return G_SOURCE_REMOVE;
}

void takeState(VeltoInterstitial* interstitial) {
  const Kept kept(interstitial);
  auto& priv = privateOf(interstitial);
  const auto state = priv.ad ? VeltoInterstitialState(priv.ad->state()) : VELTO_INTERSTITIAL_STATE_EMPTY;
  const auto before = std::exchange(priv.state, state);
  if (before == state) return;
  if ((state == VELTO_INTERSTITIAL_STATE_EMPTY || priv.rising) && !priv.givingUp)
    priv.givingUp = g_idle_add(giveUp, interstitial);
  const bool hasClosed = before == VELTO_INTERSTITIAL_STATE_PRESENTED && std::exchange(priv.appeared, false);
  const auto answer = hasClosed ? priv.presenting.take() : nullptr;
  g_object_freeze_notify(G_OBJECT(interstitial));
  notifyInterstitial(interstitial, InterstitialState);
  if (before == VELTO_INTERSTITIAL_STATE_READY || state == VELTO_INTERSTITIAL_STATE_READY)
    notifyInterstitial(interstitial, InterstitialReady);
  g_object_thaw_notify(G_OBJECT(interstitial));
  if (!hasClosed) return;
  emitInterstitial(interstitial, InterstitialSignal::Closed);
  answer(nullptr);
}

// Null when it is on its way to the screen. The parent may be null.
GError* present(VeltoInterstitial* interstitial, GtkWidget* parent) {
  auto& priv = privateOf(interstitial);
  using Why = velto::VeltoAdEndReason;
  if (!priv.ad) return errorFrom(velto::VeltoErrorAd::because(Why::NothingReady));
  if (priv.state == VELTO_INTERSTITIAL_STATE_PRESENTED)
    return errorFrom(velto::VeltoErrorAd::because(Why::PresentedAlready));
  GError* error = nullptr;
  const auto ad = priv.ad;
  guarded(
      &error,
      [&] {
        const char* why = nullptr;
        const auto over = ground().windowController(G_OBJECT(interstitial), parent, why);
        if (!over) return void(error = refusal(why));
        ad->setAnimation(velto::VeltoAnimation(priv.animation));
        priv.rising = true;
        const auto refused = ad->show(over);
        if (refused) error = errorFrom(*refused);
      },
      adErrorFrom);
  if (error) priv.rising = false;
  return error;
}

void presentByItself(VeltoInterstitial* interstitial) {
  auto& priv = privateOf(interstitial);
  if (priv.autoPresentFor && priv.state == VELTO_INTERSTITIAL_STATE_READY)
    velto_interstitial_present(interstitial, priv.autoPresentFor);
}

}  // namespace

class InterstitialDelegate final : public velto::VeltoInterstitialViewControllerDelegate {
 public:
  using Controller = velto::VeltoInterstitialViewControllerPrivate;

  explicit InterstitialDelegate(VeltoInterstitial* interstitial) : interstitial_(interstitial) {}
  void forget() { interstitial_ = nullptr; }

  // It is said anew at each time.
  std::shared_ptr<velto::UIViewController> presentViewController() override { return nullptr; }
  void veltoInterstitialViewControllerDidFinishLoad(Controller&) override {
    if (!interstitial_) return;
    auto* interstitial = interstitial_;
    const Kept kept(interstitial);
    auto& priv = privateOf(interstitial);
    priv.wantsAd = false;
    const auto answer = priv.loading.take();
    emitInterstitial(interstitial, InterstitialSignal::Loaded);
    answer(nullptr);
    if (interstitial_) presentByItself(interstitial);
  }
  void veltoInterstitialViewControllerDidFail(Controller&, const velto::VeltoErrorAd& error) override {
    if (!interstitial_) return;
    auto& priv = privateOf(interstitial_);
    // What was to be presented and is not; the page of one that is seen; or a load.
    Waiting nobody(nullptr);
    const bool isThere = priv.appeared || priv.rising;
    const bool isOfPage = isThere && (!priv.ad || priv.ad->isLoading() || !isWanted(priv));
    if (isOfPage && std::exchange(priv.rising, false))
      return fail(interstitial_, priv.presenting, errorFrom(error));
    if (!isOfPage) priv.wantsAd = false;
    fail(interstitial_, isOfPage ? nobody : priv.loading, errorFrom(error));
  }
  void veltoInterstitialViewControllerDidAppear(Controller&) override {
    if (!interstitial_) return;
    const Kept kept(interstitial_);
    privateOf(interstitial_).appeared = true;
    privateOf(interstitial_).rising = false;
    emitInterstitial(interstitial_, InterstitialSignal::Presented);
  }
  // A person may leave while it comes in.
  void veltoInterstitialViewControllerDidClose(Controller& controller) override {
    if (interstitial_ && privateOf(interstitial_).rising)
      veltoInterstitialViewControllerDidAppear(controller);
  }
  void veltoInterstitialViewControllerDidPress(Controller&) override {
    if (interstitial_) emitInterstitial(interstitial_, InterstitialSignal::Pressed);
  }
  void veltoInterstitialViewControllerDidChangeState(Controller&) override {
    if (interstitial_) takeState(interstitial_);
  }

 private:
  VeltoInterstitial* interstitial_;  // null once it is disposed of
};

InterstitialPrivate::InterstitialPrivate(VeltoInterstitial* interstitial)
    : delegate(std::make_shared<InterstitialDelegate>(interstitial)),
      loading([interstitial] {
        auto& priv = privateOf(interstitial);
        if (!isWanted(priv) && priv.state == VELTO_INTERSTITIAL_STATE_LOADING)
          velto_interstitial_clear(interstitial);
      }),
      presenting([interstitial] { velto_interstitial_clear(interstitial); }) {}

InterstitialPrivate::~InterstitialPrivate() = default;

void letInterstitialGo(VeltoInterstitial* interstitial) {
  auto& priv = privateOf(interstitial);
  if (priv.delegate) priv.delegate->forget();
  priv.delegate.reset();
  priv.ad.reset();
  priv.rising = false;
  priv.state = VELTO_INTERSTITIAL_STATE_EMPTY;
  if (priv.givingUp) g_source_remove(std::exchange(priv.givingUp, 0));
  GError* gone = cancelled();
  priv.loading.take()(gone);
  priv.presenting.take()(gone);
  g_error_free(gone);
}

}  // namespace velto_glib

using namespace velto_glib;

static void load(VeltoInterstitial* self) {
  auto& priv = privateOf(self);
  GError* error = nullptr;
  const bool asks = guarded(
      &error,
      [&] {
        if (!priv.ad) priv.ad = velto::VeltoInterstitialViewController::initWithDelegate(priv.delegate);
        const auto ad = priv.ad;  // also when a handler clears the interstitial
        ad->setPlacement(priv.placement.value_or("interstitial"));
        ad->setHeavyAdPolicy(velto::VeltoHeavyAdPolicy(priv.heavyAdPolicy));
        ad->load(settingsFrom(priv.targeting));
      },
      adErrorFrom);
  if (!asks) fail(self, priv.loading, error);
}

static GTask* new_task(VeltoInterstitial* self, GCancellable* cancellable, GAsyncReadyCallback callback,
                       gpointer user_data, gpointer tag, const char* name) {
  auto* task = g_task_new(self, cancellable, callback, user_data);
  g_task_set_source_tag(task, tag);
  g_task_set_name(task, name);
  return task;
}

/**
 * velto_interstitial_load:
 * @self: an interstitial
 *
 * Loads an ad. It takes the place of one that is ready; while one is presented, the new one is ready after that.
 *
 * [signal@Velto.Interstitial::loaded] or [signal@Velto.Interstitial::failed] tells how it went.
 *
 * Since: 1.0
 */
void velto_interstitial_load(VeltoInterstitial* self) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  if (!isStarted(__func__)) return;
  g_return_if_fail(privateOf(self).delegate);
  const Kept kept(self);
  privateOf(self).wantsAd = true;
  load(self);
}

/**
 * velto_interstitial_load_async:
 * @self: an interstitial
 * @cancellable: (nullable): a cancellable
 * @callback: (scope async): called when the ad is ready, or did not come
 * @user_data: user data for @callback
 *
 * Loads an ad, and tells how it went.
 *
 * Whoever asks while an ad is on its way hears of that one. When the last one to wait calls it off, it is given up.
 *
 * Since: 1.0
 */
void velto_interstitial_load_async(VeltoInterstitial* self, GCancellable* cancellable,
                                   GAsyncReadyCallback callback, gpointer user_data) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  g_return_if_fail(!cancellable || G_IS_CANCELLABLE(cancellable));
  velto_return_if_elsewhere();
  auto* task =
      new_task(self, cancellable, callback, user_data, gpointer(velto_interstitial_load_async), __func__);
  if (!velto_client_get_default()) {
    g_task_return_new_error(task, VELTO_CLIENT_ERROR, VELTO_CLIENT_ERROR_NOT_READY,
                            "no ads without a client: call velto_client_start() before");
    return g_object_unref(task);
  }
  auto& priv = privateOf(self);
  if (!priv.delegate) {
    g_task_return_new_error(task, VELTO_AD_ERROR, VELTO_AD_ERROR_CANCELLED, "the interstitial was destroyed");
    return g_object_unref(task);
  }
  if (g_task_return_error_if_cancelled(task)) return g_object_unref(task);
  const bool isLoading = priv.wantsAd && priv.state == VELTO_INTERSTITIAL_STATE_LOADING;
  const bool isOnItsWay = isLoading || !priv.loading.isEmpty();
  priv.loading.add(task);
  const Kept kept(self);
  if (!isOnItsWay) load(self);
}

/**
 * velto_interstitial_load_finish:
 * @self: an interstitial
 * @result: what the callback was given
 * @error: return location for an error of [error@Velto.AdError] or [error@Gio.IOErrorEnum]
 *
 * Ends what [method@Velto.Interstitial.load_async] began.
 *
 * Returns: whether an ad is ready
 *
 * Since: 1.0
 */
gboolean velto_interstitial_load_finish(VeltoInterstitial* self, GAsyncResult* result, GError** error) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  g_return_val_if_fail(g_task_is_valid(result, self), FALSE);
  return g_task_propagate_boolean(G_TASK(result), error);
}

/**
 * velto_interstitial_present:
 * @self: an interstitial
 * @parent: (nullable): a widget of the window to cover; without one there is nothing to present over, but in a test
 *
 * Presents the ad that is ready.
 *
 * Where that is not possible, since none is ready, or the window is not on the screen or shows another ad,
 * [signal@Velto.Interstitial::failed] says so before this returns.
 *
 * Since: 1.0
 */
void velto_interstitial_present(VeltoInterstitial* self, GtkWidget* parent) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  g_return_if_fail(!parent || GTK_IS_WIDGET(parent));
  const Kept kept(self);
  Waiting nobody(nullptr);
  if (auto* error = present(self, parent)) fail(self, nobody, error);
}

/**
 * velto_interstitial_present_async:
 * @self: an interstitial
 * @parent: (nullable): a widget of the window to cover; without one there is nothing to present over, but in a test
 * @cancellable: (nullable): a cancellable, which takes the ad off the screen
 * @callback: (scope async): called when the ad has gone, or could not be presented
 * @user_data: user data for @callback
 *
 * Presents the ad that is ready, and tells when it has gone.
 *
 * Since: 1.0
 */
void velto_interstitial_present_async(VeltoInterstitial* self, GtkWidget* parent, GCancellable* cancellable,
                                      GAsyncReadyCallback callback, gpointer user_data) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  g_return_if_fail(!parent || GTK_IS_WIDGET(parent));
  g_return_if_fail(!cancellable || G_IS_CANCELLABLE(cancellable));
  auto* task =
      new_task(self, cancellable, callback, user_data, gpointer(velto_interstitial_present_async), __func__);
  if (g_task_return_error_if_cancelled(task)) return g_object_unref(task);
  auto* error = present(self, parent);
  // Who hears that it is on its way to the screen may have taken it off.
  const bool isThere = privateOf(self).state == VELTO_INTERSTITIAL_STATE_PRESENTED;
  if (!error && isThere) return privateOf(self).presenting.add(task);
  g_task_return_error(task, error ? error : cancelled());
  g_object_unref(task);
}

/**
 * velto_interstitial_present_finish:
 * @self: an interstitial
 * @result: what the callback was given
 * @error: return location for an error of [error@Velto.AdError] or [error@Gio.IOErrorEnum]
 *
 * Ends what [method@Velto.Interstitial.present_async] began.
 *
 * Returns: whether the ad was presented
 *
 * Since: 1.0
 */
gboolean velto_interstitial_present_finish(VeltoInterstitial* self, GAsyncResult* result, GError** error) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  g_return_val_if_fail(g_task_is_valid(result, self), FALSE);
  return g_task_propagate_boolean(G_TASK(result), error);
}

/**
 * velto_interstitial_clear:
 * @self: an interstitial
 *
 * Lets go of the ad: takes it off the screen, and gives up one that is on its way.
 *
 * Since: 1.0
 */
void velto_interstitial_clear(VeltoInterstitial* self) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  const Kept kept(self);
  auto& priv = privateOf(self);
  priv.ad.reset();
  priv.wantsAd = priv.rising = false;
  const auto answer = priv.loading.take();
  takeState(self);
  GError* gone = cancelled();
  answer(gone);
  priv.presenting.take()(gone);  // one that has not been seen yet
  g_error_free(gone);
}
