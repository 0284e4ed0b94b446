// The interstitial as an object.
#include "velto-interstitial-private.h"

using namespace velto_glib;

struct _VeltoInterstitial {
  GObject parent_instance;
  InterstitialPrivate* priv;
};

/**
 * VeltoInterstitial:
 *
 * An ad that covers a window for a time, such as between two levels of a game.
 *
 * It is loaded ahead of time, and presented when the application says so:
 *
 * ```c
 * VeltoInterstitial *ad = velto_interstitial_new ();
 * velto_interstitial_load (ad);
 * …
 * if (velto_interstitial_get_ready (ad))
 *   velto_interstitial_present (ad, GTK_WIDGET (window));
 * ```
 *
 * A person closes it, and [signal@Velto.Interstitial::closed] says that the window is the application's again. Whoever lets
 * go of the object takes the ad off the screen.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoInterstitial, velto_interstitial, G_TYPE_OBJECT)

static GParamSpec* properties[InterstitialProperties];
static guint signals[5];

static void velto_interstitial_get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  const auto& priv = *VELTO_INTERSTITIAL(object)->priv;
  switch (id) {
    case InterstitialReady:
      return g_value_set_boolean(value, priv.state == VELTO_INTERSTITIAL_STATE_READY);
    case InterstitialState:
      return g_value_set_enum(value, priv.state);
    case InterstitialAutoPresentFor:
      return g_value_set_object(value, priv.autoPresentFor);
    case InterstitialAnimation:
      return g_value_set_enum(value, priv.animation);
    case InterstitialHeavyAdPolicy:
      return g_value_set_enum(value, priv.heavyAdPolicy);
    case InterstitialTargeting:
      return g_value_set_object(value, priv.targeting);
    case InterstitialPlacement:
      return g_value_set_string(value, priv.placement ? priv.placement->c_str() : nullptr);
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void velto_interstitial_set_property(GObject* object, guint id, const GValue* value,
                                            GParamSpec* pspec) {
  auto* self = VELTO_INTERSTITIAL(object);
  switch (id) {
    case InterstitialAutoPresentFor:
      return velto_interstitial_set_auto_present_for(self,
                                                     static_cast<GtkWidget*>(g_value_get_object(value)));
    case InterstitialAnimation:
      return velto_interstitial_set_animation(self, VeltoAnimation(g_value_get_enum(value)));
    case InterstitialHeavyAdPolicy:
      return velto_interstitial_set_heavy_ad_policy(self, VeltoHeavyAdPolicy(g_value_get_enum(value)));
    case InterstitialTargeting:
      return velto_interstitial_set_targeting(self, static_cast<VeltoTargeting*>(g_value_get_object(value)));
    case InterstitialPlacement:
      return velto_interstitial_set_placement(self, g_value_get_string(value));
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void parent_gone(gpointer self, GObject*) {
  privateOf(VELTO_INTERSTITIAL(self)).autoPresentFor = nullptr;
  notifyInterstitial(VELTO_INTERSTITIAL(self), InterstitialAutoPresentFor);
}

static void velto_interstitial_dispose(GObject* object) {
  auto& priv = *VELTO_INTERSTITIAL(object)->priv;
  letInterstitialGo(VELTO_INTERSTITIAL(object));
  if (auto* parent = std::exchange(priv.autoPresentFor, nullptr))
    g_object_weak_unref(G_OBJECT(parent), parent_gone, object);
  g_clear_object(&priv.targeting);
  G_OBJECT_CLASS(velto_interstitial_parent_class)->dispose(object);
}

static void velto_interstitial_finalize(GObject* object) {
  delete VELTO_INTERSTITIAL(object)->priv;
  G_OBJECT_CLASS(velto_interstitial_parent_class)->finalize(object);
}

static void add_properties(GObjectClass* klass) {
  constexpr auto readable = GParamFlags(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
  constexpr auto writable = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY);

  /**
   * VeltoInterstitial:ready: (getter get_ready)
   *
   * Whether an ad can be presented.
   *
   * Since: 1.0
   */
  properties[InterstitialReady] = g_param_spec_boolean("ready", nullptr, nullptr, FALSE, readable);
  /**
   * VeltoInterstitial:state: (getter get_state)
   *
   * What the interstitial is good for now.
   *
   * Since: 1.0
   */
  properties[InterstitialState] = g_param_spec_enum("state", nullptr, nullptr, VELTO_TYPE_INTERSTITIAL_STATE,
                                                    VELTO_INTERSTITIAL_STATE_EMPTY, readable);
  /**
   * VeltoInterstitial:auto-present-for: (getter get_auto_present_for) (setter set_auto_present_for)
   *
   * A widget over whose window each ad is presented as soon as it is ready.
   *
   * Since: 1.0
   */
  properties[InterstitialAutoPresentFor] =
      g_param_spec_object("auto-present-for", nullptr, nullptr, GTK_TYPE_WIDGET, writable);
  /**
   * VeltoInterstitial:animation: (getter get_animation) (setter set_animation)
   *
   * How the ad comes in. Counts until the first one was presented.
   *
   * Since: 1.0
   */
  properties[InterstitialAnimation] =
      g_param_spec_enum("animation", nullptr, nullptr, VELTO_TYPE_ANIMATION, VELTO_ANIMATION_NONE, writable);
  /**
   * VeltoInterstitial:heavy-ad-policy: (getter get_heavy_ad_policy) (setter set_heavy_ad_policy)
   *
   * What becomes of an ad that costs the device too much. Counts from the next load on.
   *
   * Since: 1.0
   */
  properties[InterstitialHeavyAdPolicy] =
      g_param_spec_enum("heavy-ad-policy", nullptr, nullptr, VELTO_TYPE_HEAVY_AD_POLICY,
                        VELTO_HEAVY_AD_POLICY_REPORT, writable);
  /**
   * VeltoInterstitial:targeting: (getter get_targeting) (setter set_targeting)
   *
   * What the ad server is told of the person who uses the application.
   *
   * Since: 1.0
   */
  properties[InterstitialTargeting] =
      g_param_spec_object("targeting", nullptr, nullptr, VELTO_TYPE_TARGETING, writable);
  /**
   * VeltoInterstitial:placement: (getter get_placement) (setter set_placement)
   *
   * What logs, timelines and metrics call it.
   *
   * Since: 1.0
   */
  properties[InterstitialPlacement] = g_param_spec_string("placement", nullptr, nullptr, nullptr, writable);
  g_object_class_install_properties(klass, InterstitialProperties, properties);
}

static void velto_interstitial_class_init(VeltoInterstitialClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->get_property = velto_interstitial_get_property;
  object_class->set_property = velto_interstitial_set_property;
  object_class->dispose = velto_interstitial_dispose;
  object_class->finalize = velto_interstitial_finalize;
  add_properties(object_class);

  const auto add = [](InterstitialSignal signal, const char* name, guint count, GType parameter) {
    signals[int(signal)] = g_signal_new(name, VELTO_TYPE_INTERSTITIAL, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr,
                                        nullptr, G_TYPE_NONE, count, parameter);
  };
  /**
   * VeltoInterstitial::loaded:
   * @self: the interstitial
   *
   * An ad is ready to be presented.
   *
   * Since: 1.0
   */
  add(InterstitialSignal::Loaded, "loaded", 0, G_TYPE_NONE);
  /**
   * VeltoInterstitial::failed:
   * @self: the interstitial
   * @error: why, an error of [error@Velto.AdError]
   *
   * An ad did not come, or could not be presented.
   *
   * Since: 1.0
   */
  add(InterstitialSignal::Failed, "failed", 1, G_TYPE_ERROR);
  /**
   * VeltoInterstitial::presented:
   * @self: the interstitial
   *
   * The ad covers the window.
   *
   * Since: 1.0
   */
  add(InterstitialSignal::Presented, "presented", 0, G_TYPE_NONE);
  /**
   * VeltoInterstitial::pressed:
   * @self: the interstitial
   *
   * A person tapped the ad.
   *
   * Since: 1.0
   */
  add(InterstitialSignal::Pressed, "pressed", 0, G_TYPE_NONE);
  /**
   * VeltoInterstitial::closed:
   * @self: the interstitial
   *
   * The ad has gone, and the window is the application's again.
   *
   * Since: 1.0
   */
  add(InterstitialSignal::Closed, "closed", 0, G_TYPE_NONE);
}

static void velto_interstitial_init(VeltoInterstitial* self) {
  self->priv = new InterstitialPrivate(self);
}

namespace velto_glib {

InterstitialPrivate& privateOf(VeltoInterstitial* interstitial) {
  return *interstitial->priv;
}

void notifyInterstitial(VeltoInterstitial* interstitial, InterstitialProperty property) {
  g_object_notify_by_pspec(G_OBJECT(interstitial), properties[property]);
}

void emitInterstitial(VeltoInterstitial* interstitial, InterstitialSignal signal, const GError* error) {
  g_signal_emit(interstitial, signals[int(signal)], 0, error);
}

}  // namespace velto_glib

/**
 * velto_interstitial_new:
 *
 * Creates an interstitial that is empty.
 *
 * Returns: (transfer full): a new interstitial
 *
 * Since: 1.0
 */
VeltoInterstitial* velto_interstitial_new() {
  velto_return_val_if_elsewhere(nullptr);
  return VELTO_INTERSTITIAL(g_object_new(VELTO_TYPE_INTERSTITIAL, nullptr));
}

/**
 * velto_interstitial_get_ready: (get-property ready)
 * @self: an interstitial
 *
 * Gets whether an ad can be presented.
 *
 * Returns: whether one can
 *
 * Since: 1.0
 */
gboolean velto_interstitial_get_ready(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return privateOf(self).state == VELTO_INTERSTITIAL_STATE_READY;
}

/**
 * velto_interstitial_get_state: (get-property state)
 * @self: an interstitial
 *
 * Gets what the interstitial is good for now.
 *
 * Returns: the state
 *
 * Since: 1.0
 */
VeltoInterstitialState velto_interstitial_get_state(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), VeltoInterstitialState(0));
  velto_return_val_if_elsewhere(VeltoInterstitialState(0));
  return privateOf(self).state;
}

/**
 * velto_interstitial_get_auto_present_for: (get-property auto-present-for)
 * @self: an interstitial
 *
 * Gets the widget over whose window each ad is presented.
 *
 * Returns: (transfer none) (nullable): the widget
 *
 * Since: 1.0
 */
GtkWidget* velto_interstitial_get_auto_present_for(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return privateOf(self).autoPresentFor;
}

/**
 * velto_interstitial_set_auto_present_for: (set-property auto-present-for)
 * @self: an interstitial
 * @parent: (nullable): the widget
 *
 * Sets the widget over whose window each ad is presented.
 *
 * Since: 1.0
 */
void velto_interstitial_set_auto_present_for(VeltoInterstitial* self, GtkWidget* parent) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  g_return_if_fail(!parent || GTK_IS_WIDGET(parent));
  auto* before = std::exchange(privateOf(self).autoPresentFor, parent);
  if (before == parent) return;
  if (before) g_object_weak_unref(G_OBJECT(before), parent_gone, self);
  if (parent) g_object_weak_ref(G_OBJECT(parent), parent_gone, self);
  notifyInterstitial(self, InterstitialAutoPresentFor);
}
