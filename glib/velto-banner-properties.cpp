// The banner's values. Most count from the next load on, which may be a refresh.
#include "velto-banner-private.h"

namespace velto_glib {
namespace {

velto::CGSize roomOf(VeltoBannerSize size) {
  switch (size) {
    case VELTO_BANNER_SIZE_LEADERBOARD:
      return {728, 90};
    case VELTO_BANNER_SIZE_MEDIUM_RECTANGLE:
      return {300, 250};
    default:  // one that adapts is at least this
      return {320, 50};
  }
}

template <class Member, class Value>
bool set(VeltoBanner* banner, Member member, Value value, BannerProperty property) {
  if (std::exchange(privateOf(banner).*member, value) == value) return false;
  passOnValues(privateOf(banner));
  notifyBanner(banner, property);
  return true;
}

}  // namespace

void keepRoom(VeltoBanner* banner) {
  const auto& priv = privateOf(banner);
  if (!priv.slot) return;
  guarded(__func__, [&] {
    ground().setSlotRoom(priv.slot, priv.collapse ? std::nullopt : std::optional(roomOf(priv.size)));
  });
}

}  // namespace velto_glib

using namespace velto_glib;

/**
 * velto_banner_new:
 * @size: what the ad server is asked for
 *
 * Creates a banner that is empty.
 *
 * Returns: a new banner
 *
 * Since: 1.0
 */
GtkWidget* velto_banner_new(VeltoBannerSize size) {
  velto_return_val_if_elsewhere(nullptr);
  return GTK_WIDGET(g_object_new(VELTO_TYPE_BANNER, "size", size, nullptr));
}

/**
 * velto_banner_get_size: (get-property size)
 * @self: a banner
 *
 * Gets what the ad server is asked for.
 *
 * Returns: the size
 *
 * Since: 1.0
 */
VeltoBannerSize velto_banner_get_size(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), VeltoBannerSize(0));
  velto_return_val_if_elsewhere(VeltoBannerSize(0));
  return privateOf(self).size;
}

/**
 * velto_banner_set_size: (set-property size)
 * @self: a banner
 * @size: the size
 *
 * Sets what the ad server is asked for.
 *
 * Since: 1.0
 */
void velto_banner_set_size(VeltoBanner* self, VeltoBannerSize size) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  if (!isValueOf(VELTO_TYPE_BANNER_SIZE, size, __func__)) return;
  if (set(self, &BannerPrivate::size, size, BannerSize)) keepRoom(self);
}

/**
 * velto_banner_get_auto_load: (get-property auto-load)
 * @self: a banner
 *
 * Gets whether an ad is loaded when the banner is first mapped.
 *
 * Returns: whether it is
 *
 * Since: 1.0
 */
gboolean velto_banner_get_auto_load(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return privateOf(self).autoLoad;
}

/**
 * velto_banner_set_auto_load: (set-property auto-load)
 * @self: a banner
 * @auto_load: whether it is
 *
 * Sets whether an ad is loaded when the banner is first mapped.
 *
 * Since: 1.0
 */
void velto_banner_set_auto_load(VeltoBanner* self, gboolean auto_load) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  set(self, &BannerPrivate::autoLoad, gboolean(auto_load != FALSE), BannerAutoLoad);
}

/**
 * velto_banner_get_auto_refresh: (get-property auto-refresh)
 * @self: a banner
 *
 * Gets whether new ads take the place of the one that is shown.
 *
 * Returns: whether they do
 *
 * Since: 1.0
 */
gboolean velto_banner_get_auto_refresh(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return privateOf(self).autoRefresh;
}

/**
 * velto_banner_set_auto_refresh: (set-property auto-refresh)
 * @self: a banner
 * @auto_refresh: whether they do
 *
 * Sets whether new ads take the place of the one that is shown.
 *
 * Since: 1.0
 */
void velto_banner_set_auto_refresh(VeltoBanner* self, gboolean auto_refresh) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  set(self, &BannerPrivate::autoRefresh, gboolean(auto_refresh != FALSE), BannerAutoRefresh);
}

/**
 * velto_banner_get_refresh_interval: (get-property refresh-interval)
 * @self: a banner
 *
 * Gets the time from the start of one load to that of the next.
 *
 * Returns: seconds, or 0 for never
 *
 * Since: 1.0
 */
guint velto_banner_get_refresh_interval(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), 0);
  velto_return_val_if_elsewhere(0);
  return privateOf(self).refreshInterval;
}

/**
 * velto_banner_set_refresh_interval: (set-property refresh-interval)
 * @self: a banner
 * @seconds: seconds, or 0 for never
 *
 * Sets the time from the start of one load to that of the next.
 *
 * Since: 1.0
 */
void velto_banner_set_refresh_interval(VeltoBanner* self, guint seconds) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  set(self, &BannerPrivate::refreshInterval, seconds, BannerRefreshInterval);
}

/**
 * velto_banner_get_animation: (get-property animation)
 * @self: a banner
 *
 * Gets how the first ad comes in.
 *
 * Returns: the animation
 *
 * Since: 1.0
 */
VeltoAnimation velto_banner_get_animation(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), VeltoAnimation(0));
  velto_return_val_if_elsewhere(VeltoAnimation(0));
  return privateOf(self).animation;
}

/**
 * velto_banner_set_animation: (set-property animation)
 * @self: a banner
 * @animation: the animation
 *
 * Sets how the first ad comes in.
 *
 * Since: 1.0
 */
void velto_banner_set_animation(VeltoBanner* self, VeltoAnimation animation) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  if (!isValueOf(VELTO_TYPE_ANIMATION, animation, __func__)) return;
  set(self, &BannerPrivate::animation, animation, BannerAnimation);
}

/**
 * velto_banner_get_heavy_ad_policy: (get-property heavy-ad-policy)
 * @self: a banner
 *
 * Gets what becomes of an ad that costs the device too much.
 *
 * Returns: the policy
 *
 * Since: 1.0
 */
VeltoHeavyAdPolicy velto_banner_get_heavy_ad_policy(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), VeltoHeavyAdPolicy(0));
  velto_return_val_if_elsewhere(VeltoHeavyAdPolicy(0));
  return privateOf(self).heavyAdPolicy;
}

/**
 * velto_banner_set_heavy_ad_policy: (set-property heavy-ad-policy)
 * @self: a banner
 * @policy: the policy
 *
 * Sets what becomes of an ad that costs the device too much.
 *
 * Since: 1.0
 */
void velto_banner_set_heavy_ad_policy(VeltoBanner* self, VeltoHeavyAdPolicy policy) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  if (!isValueOf(VELTO_TYPE_HEAVY_AD_POLICY, policy, __func__)) return;
  set(self, &BannerPrivate::heavyAdPolicy, policy, BannerHeavyAdPolicy);
}

/**
 * velto_banner_get_collapse: (get-property collapse)
 * @self: a banner
 *
 * Gets whether the banner takes no room while it is empty.
 *
 * Returns: whether it does
 *
 * Since: 1.0
 */
gboolean velto_banner_get_collapse(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return privateOf(self).collapse;
}

/**
 * velto_banner_set_collapse: (set-property collapse)
 * @self: a banner
 * @collapse: whether it does
 *
 * Sets whether the banner takes no room while it is empty.
 *
 * Since: 1.0
 */
void velto_banner_set_collapse(VeltoBanner* self, gboolean collapse) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  if (set(self, &BannerPrivate::collapse, gboolean(collapse != FALSE), BannerCollapse)) keepRoom(self);
}

/**
 * velto_banner_get_targeting: (get-property targeting)
 * @self: a banner
 *
 * Gets what the ad server is told of the person.
 *
 * Returns: (transfer none) (nullable): the targeting
 *
 * Since: 1.0
 */
VeltoTargeting* velto_banner_get_targeting(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return privateOf(self).targeting;
}

/**
 * velto_banner_set_targeting: (set-property targeting)
 * @self: a banner
 * @targeting: (nullable): the targeting
 *
 * Sets what the ad server is told of the person.
 *
 * Since: 1.0
 */
void velto_banner_set_targeting(VeltoBanner* self, VeltoTargeting* targeting) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  g_return_if_fail(!targeting || VELTO_IS_TARGETING(targeting));
  if (g_set_object(&privateOf(self).targeting, targeting)) notifyBanner(self, BannerTargeting);
}

/**
 * velto_banner_get_state: (get-property state)
 * @self: a banner
 *
 * Gets what stands in the banner's place.
 *
 * Returns: the state
 *
 * Since: 1.0
 */
VeltoBannerState velto_banner_get_state(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), VeltoBannerState(0));
  velto_return_val_if_elsewhere(VeltoBannerState(0));
  return privateOf(self).state;
}

/**
 * velto_banner_get_ad_width: (get-property ad-width)
 * @self: a banner
 *
 * Gets the width of the ad that is shown.
 *
 * Returns: points, or 0 while there is none
 *
 * Since: 1.0
 */
int velto_banner_get_ad_width(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), 0);
  velto_return_val_if_elsewhere(0);
  return privateOf(self).adWidth;
}

/**
 * velto_banner_get_ad_height: (get-property ad-height)
 * @self: a banner
 *
 * Gets the height of the ad that is shown.
 *
 * Returns: points, or 0 while there is none
 *
 * Since: 1.0
 */
int velto_banner_get_ad_height(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), 0);
  velto_return_val_if_elsewhere(0);
  return privateOf(self).adHeight;
}
