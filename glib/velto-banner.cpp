// The banner as a widget.
#include <libintl.h>

#include "velto-banner-private.h"

using namespace velto_glib;

struct _VeltoBanner {
  GtkWidget parent_instance;
  BannerPrivate* priv;
};

/**
 * VeltoBanner:
 *
 * A widget that shows an ad.
 *
 * It asks for the size of its ad; where there is less room it shows it smaller, down to two fifths. While there is nothing to
 * show it takes no room, or keeps it: [property@Velto.Banner:collapse]. It may stand in any container, be scrolled, covered
 * and moved as other widgets are. An ad that needs more room for a time, since a person expands it, leaves the banner for
 * a layer over the window's content, and comes back.
 *
 * ```c
 * GtkWidget *banner = velto_banner_new (VELTO_BANNER_SIZE_BANNER);
 * gtk_box_append (GTK_BOX (box), banner);
 * velto_banner_load (VELTO_BANNER (banner));
 * ```
 *
 * Or without code, in a template of a `.ui` file:
 *
 * ```xml
 * <object class="VeltoBanner">
 *   <property name="auto-load">true</property>
 * </object>
 * ```
 *
 * Ads are asked for in the name of the [class@Velto.Client] that has been started.
 *
 * # Actions
 *
 * `VeltoBanner` defines the actions `banner.load` and `banner.clear`.
 *
 * # CSS nodes
 *
 * `VeltoBanner` has a single CSS node with the name `veltobanner`, and one of the style classes `.empty`, `.loading`,
 * `.shown`, `.expanded` and `.resized`.
 *
 * # Accessibility
 *
 * `VeltoBanner` has the role %GTK_ACCESSIBLE_ROLE_GROUP, and is labelled as an advertisement.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoBanner, velto_banner, GTK_TYPE_WIDGET)

static GParamSpec* properties[BannerProperties];
static guint signals[4];

static void velto_banner_get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  const auto& priv = *VELTO_BANNER(object)->priv;
  switch (id) {
    case BannerSize:
      return g_value_set_enum(value, priv.size);
    case BannerAutoLoad:
      return g_value_set_boolean(value, priv.autoLoad);
    case BannerAutoRefresh:
      return g_value_set_boolean(value, priv.autoRefresh);
    case BannerRefreshInterval:
      return g_value_set_uint(value, priv.refreshInterval);
    case BannerAnimation:
      return g_value_set_enum(value, priv.animation);
    case BannerHeavyAdPolicy:
      return g_value_set_enum(value, priv.heavyAdPolicy);
    case BannerCollapse:
      return g_value_set_boolean(value, priv.collapse);
    case BannerTargeting:
      return g_value_set_object(value, priv.targeting);
    case BannerPlacement:
      return g_value_set_string(value, priv.placement ? priv.placement->c_str() : nullptr);
    case BannerState:
      return g_value_set_enum(value, priv.state);
    case BannerAdWidth:
      return g_value_set_int(value, priv.adWidth);
    case BannerAdHeight:
      return g_value_set_int(value, priv.adHeight);
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void velto_banner_set_property(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_BANNER(object);
  switch (id) {
    case BannerSize:
      return velto_banner_set_size(self, VeltoBannerSize(g_value_get_enum(value)));
    case BannerAutoLoad:
      return velto_banner_set_auto_load(self, g_value_get_boolean(value));
    case BannerAutoRefresh:
      return velto_banner_set_auto_refresh(self, g_value_get_boolean(value));
    case BannerRefreshInterval:
      return velto_banner_set_refresh_interval(self, g_value_get_uint(value));
    case BannerAnimation:
      return velto_banner_set_animation(self, VeltoAnimation(g_value_get_enum(value)));
    case BannerHeavyAdPolicy:
      return velto_banner_set_heavy_ad_policy(self, VeltoHeavyAdPolicy(g_value_get_enum(value)));
    case BannerCollapse:
      return velto_banner_set_collapse(self, g_value_get_boolean(value));
    case BannerTargeting:
      return velto_banner_set_targeting(self, static_cast<VeltoTargeting*>(g_value_get_object(value)));
    case BannerPlacement:
      return velto_banner_set_placement(self, g_value_get_string(value));
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

// What may begin now is told of, and whoever hears of it may do anything: not in the middle of mapping a window.
static gboolean velto_banner_seen(gpointer data) {
  auto* self = VELTO_BANNER(data);
  auto& priv = *self->priv;
  priv.seen = 0;
  const Kept kept(self);
  const auto ad = priv.ad;
  if (ad) guarded(__func__, [&] { ad->setRefreshPaused(false); });
  if (!std::exchange(priv.wasSeen, true) && priv.autoLoad) velto_banner_load(self);
  return G_SOURCE_REMOVE;
}

static void velto_banner_map(GtkWidget* widget) {
  auto& priv = *VELTO_BANNER(widget)->priv;
  GTK_WIDGET_CLASS(velto_banner_parent_class)->map(widget);
  if (!priv.seen) priv.seen = g_idle_add_full(G_PRIORITY_DEFAULT, velto_banner_seen, widget, nullptr);
}

static void velto_banner_unmap(GtkWidget* widget) {
  auto& priv = *VELTO_BANNER(widget)->priv;
  if (priv.seen) g_source_remove(std::exchange(priv.seen, 0));
  if (const auto ad = priv.ad) guarded(__func__, [&] { ad->setRefreshPaused(true); });
  GTK_WIDGET_CLASS(velto_banner_parent_class)->unmap(widget);
}

static void velto_banner_dispose(GObject* object) {
  auto& priv = *VELTO_BANNER(object)->priv;
  letBannerGo(VELTO_BANNER(object));
  g_clear_pointer(&priv.slot, gtk_widget_unparent);
  g_clear_object(&priv.targeting);
  G_OBJECT_CLASS(velto_banner_parent_class)->dispose(object);
}

static void velto_banner_finalize(GObject* object) {
  delete VELTO_BANNER(object)->priv;
  G_OBJECT_CLASS(velto_banner_parent_class)->finalize(object);
}

static void add_properties(GObjectClass* klass) {
  constexpr auto readable = GParamFlags(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
  constexpr auto writable = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY);

  /**
   * VeltoBanner:size: (getter get_size) (setter set_size)
   *
   * What the ad server is asked for. Counts from the next load on.
   *
   * Since: 1.0
   */
  properties[BannerSize] =
      g_param_spec_enum("size", nullptr, nullptr, VELTO_TYPE_BANNER_SIZE, VELTO_BANNER_SIZE_BANNER, writable);
  /**
   * VeltoBanner:auto-load: (getter get_auto_load) (setter set_auto_load)
   *
   * Whether to load an ad when the banner is first mapped, as for one of a `.ui` file.
   *
   * Since: 1.0
   */
  properties[BannerAutoLoad] = g_param_spec_boolean("auto-load", nullptr, nullptr, FALSE, writable);
  /**
   * VeltoBanner:auto-refresh: (getter get_auto_refresh) (setter set_auto_refresh)
   *
   * Whether a new ad takes the place of the one that is shown, again and again. Counts from the next load on.
   *
   * Nothing is refreshed while the banner is not mapped; what came due meanwhile is done when it is mapped again.
   *
   * Since: 1.0
   */
  properties[BannerAutoRefresh] = g_param_spec_boolean("auto-refresh", nullptr, nullptr, FALSE, writable);
  /**
   * VeltoBanner:refresh-interval: (getter get_refresh_interval) (setter set_refresh_interval)
   *
   * Seconds from the start of one load to that of the next; 0 is never. Counts from the next load on.
   *
   * Since: 1.0
   */
  properties[BannerRefreshInterval] =
      g_param_spec_uint("refresh-interval", nullptr, nullptr, 0, G_MAXUINT, 30, writable);
  /**
   * VeltoBanner:animation: (getter get_animation) (setter set_animation)
   *
   * How the first ad comes in.
   *
   * Since: 1.0
   */
  properties[BannerAnimation] =
      g_param_spec_enum("animation", nullptr, nullptr, VELTO_TYPE_ANIMATION, VELTO_ANIMATION_NONE, writable);
  /**
   * VeltoBanner:heavy-ad-policy: (getter get_heavy_ad_policy) (setter set_heavy_ad_policy)
   *
   * What becomes of an ad that costs the device too much. Counts from the next load on.
   *
   * Since: 1.0
   */
  properties[BannerHeavyAdPolicy] =
      g_param_spec_enum("heavy-ad-policy", nullptr, nullptr, VELTO_TYPE_HEAVY_AD_POLICY,
                        VELTO_HEAVY_AD_POLICY_REPORT, writable);
  /**
   * VeltoBanner:collapse: (getter get_collapse) (setter set_collapse)
   *
   * Whether the banner takes no room while there is nothing to show; else it keeps that of [property@Velto.Banner:size].
   *
   * It stays visible, so a box with spacing keeps that beside it.
   *
   * Since: 1.0
   */
  properties[BannerCollapse] = g_param_spec_boolean("collapse", nullptr, nullptr, TRUE, writable);
  /**
   * VeltoBanner:targeting: (getter get_targeting) (setter set_targeting)
   *
   * What the ad server is told of the person who uses the application.
   *
   * Since: 1.0
   */
  properties[BannerTargeting] =
      g_param_spec_object("targeting", nullptr, nullptr, VELTO_TYPE_TARGETING, writable);
  /**
   * VeltoBanner:state: (getter get_state)
   *
   * What stands in the banner's place.
   *
   * Since: 1.0
   */
  properties[BannerState] = g_param_spec_enum("state", nullptr, nullptr, VELTO_TYPE_BANNER_STATE,
                                              VELTO_BANNER_STATE_EMPTY, readable);
  /**
   * VeltoBanner:ad-width: (getter get_ad_width)
   *
   * The width of the ad that is shown, in points; 0 while there is none.
   *
   * Since: 1.0
   */
  properties[BannerAdWidth] = g_param_spec_int("ad-width", nullptr, nullptr, 0, G_MAXINT, 0, readable);
  /**
   * VeltoBanner:ad-height: (getter get_ad_height)
   *
   * The height of the ad that is shown, in points; 0 while there is none.
   *
   * Since: 1.0
   */
  properties[BannerAdHeight] = g_param_spec_int("ad-height", nullptr, nullptr, 0, G_MAXINT, 0, readable);
  /**
   * VeltoBanner:placement: (getter get_placement) (setter set_placement)
   *
   * What logs, timelines and metrics call it.
   *
   * Since: 1.0
   */
  properties[BannerPlacement] = g_param_spec_string("placement", nullptr, nullptr, nullptr, writable);
  g_object_class_install_properties(klass, BannerProperties, properties);
}

static void add_signals() {
  const auto add = [](BannerSignal signal, const char* name, guint count, GType parameter) {
    signals[int(signal)] = g_signal_new(name, VELTO_TYPE_BANNER, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr,
                                        nullptr, G_TYPE_NONE, count, parameter);
  };
  /**
   * VeltoBanner::loaded:
   * @self: the banner
   *
   * An ad is shown; also for each that took the place of another.
   *
   * Since: 1.0
   */
  add(BannerSignal::Loaded, "loaded", 0, G_TYPE_NONE);
  /**
   * VeltoBanner::failed:
   * @self: the banner
   * @error: why, an error of [error@Velto.AdError]
   *
   * What was asked for did not come. A refresh fails silently.
   *
   * Since: 1.0
   */
  add(BannerSignal::Failed, "failed", 1, G_TYPE_ERROR);
  /**
   * VeltoBanner::pressed:
   * @self: the banner
   *
   * A person tapped the ad.
   *
   * Since: 1.0
   */
  add(BannerSignal::Pressed, "pressed", 0, G_TYPE_NONE);
  /**
   * VeltoBanner::removed:
   * @self: the banner
   *
   * The ad that was shown is gone, for whatever reason, and there is no other in its place.
   *
   * Since: 1.0
   */
  add(BannerSignal::Removed, "removed", 0, G_TYPE_NONE);
}

static void velto_banner_class_init(VeltoBannerClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->get_property = velto_banner_get_property;
  object_class->set_property = velto_banner_set_property;
  object_class->dispose = velto_banner_dispose;
  object_class->finalize = velto_banner_finalize;
  add_properties(object_class);
  add_signals();

  auto* widget_class = GTK_WIDGET_CLASS(klass);
  widget_class->map = velto_banner_map;
  widget_class->unmap = velto_banner_unmap;
  gtk_widget_class_set_layout_manager_type(widget_class, GTK_TYPE_BIN_LAYOUT);
  gtk_widget_class_set_css_name(widget_class, "veltobanner");
  gtk_widget_class_set_accessible_role(widget_class, GTK_ACCESSIBLE_ROLE_GROUP);
  /**
   * VeltoBanner|banner.load:
   *
   * Loads an ad.
   */
  gtk_widget_class_install_action(
      widget_class, "banner.load", nullptr,
      [](GtkWidget* widget, const char*, GVariant*) { velto_banner_load(VELTO_BANNER(widget)); });
  /**
   * VeltoBanner|banner.clear:
   *
   * Takes the ad away.
   */
  gtk_widget_class_install_action(
      widget_class, "banner.clear", nullptr,
      [](GtkWidget* widget, const char*, GVariant*) { velto_banner_clear(VELTO_BANNER(widget)); });
}

static void velto_banner_init(VeltoBanner* self) {
  self->priv = new BannerPrivate(self);
  auto*& slot = self->priv->slot = ground().makeSlot();
  // One group is enough; it is the banner, by the name that the slot has.
  g_object_set(slot, "accessible-role", GTK_ACCESSIBLE_ROLE_PRESENTATION, nullptr);
  gtk_accessible_update_property(GTK_ACCESSIBLE(self), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 dgettext("velto", "Advertisement"), -1);
  gtk_widget_set_parent(slot, GTK_WIDGET(self));
  gtk_widget_add_css_class(GTK_WIDGET(self), "empty");
  gtk_widget_action_set_enabled(GTK_WIDGET(self), "banner.clear", FALSE);
}

namespace velto_glib {

BannerPrivate& privateOf(VeltoBanner* banner) {
  return *banner->priv;
}

void notifyBanner(VeltoBanner* banner, BannerProperty property) {
  g_object_notify_by_pspec(G_OBJECT(banner), properties[property]);
}

void emitBanner(VeltoBanner* banner, BannerSignal signal, const GError* error) {
  g_signal_emit(banner, signals[int(signal)], 0, error);
}

}  // namespace velto_glib
