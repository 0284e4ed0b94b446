// The interstitial's values for what is loaded and how it comes in.
#include "velto-interstitial-private.h"

using namespace velto_glib;

/**
 * velto_interstitial_get_animation: (get-property animation)
 * @self: an interstitial
 *
 * Gets how the ad comes in.
 *
 * Returns: the animation
 *
 * Since: 1.0
 */
VeltoAnimation velto_interstitial_get_animation(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), VeltoAnimation(0));
  velto_return_val_if_elsewhere(VeltoAnimation(0));
  return privateOf(self).animation;
}

/**
 * velto_interstitial_set_animation: (set-property animation)
 * @self: an interstitial
 * @animation: the animation
 *
 * Sets how the ad comes in.
 *
 * Since: 1.0
 */
void velto_interstitial_set_animation(VeltoInterstitial* self, VeltoAnimation animation) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  if (!isValueOf(VELTO_TYPE_ANIMATION, animation, __func__)) return;
  if (std::exchange(privateOf(self).animation, animation) != animation)
    notifyInterstitial(self, InterstitialAnimation);
}

/**
 * velto_interstitial_get_heavy_ad_policy: (get-property heavy-ad-policy)
 * @self: an interstitial
 *
 * Gets what becomes of an ad that costs the device too much.
 *
 * Returns: the policy
 *
 * Since: 1.0
 */
VeltoHeavyAdPolicy velto_interstitial_get_heavy_ad_policy(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), VeltoHeavyAdPolicy(0));
  velto_return_val_if_elsewhere(VeltoHeavyAdPolicy(0));
  return privateOf(self).heavyAdPolicy;
}

/**
 * velto_interstitial_set_heavy_ad_policy: (set-property heavy-ad-policy)
 * @self: an interstitial
 * @policy: the policy
 *
 * Sets what becomes of an ad that costs the device too much.
 *
 * Since: 1.0
 */
void velto_interstitial_set_heavy_ad_policy(VeltoInterstitial* self, VeltoHeavyAdPolicy policy) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  if (!isValueOf(VELTO_TYPE_HEAVY_AD_POLICY, policy, __func__)) return;
  if (std::exchange(privateOf(self).heavyAdPolicy, policy) != policy)
    notifyInterstitial(self, InterstitialHeavyAdPolicy);
}

/**
 * velto_interstitial_get_targeting: (get-property targeting)
 * @self: an interstitial
 *
 * Gets what the ad server is told of the person.
 *
 * Returns: (transfer none) (nullable): the targeting
 *
 * Since: 1.0
 */
VeltoTargeting* velto_interstitial_get_targeting(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return privateOf(self).targeting;
}

/**
 * velto_interstitial_set_targeting: (set-property targeting)
 * @self: an interstitial
 * @targeting: (nullable): the targeting
 *
 * Sets what the ad server is told of the person.
 *
 * Since: 1.0
 */
void velto_interstitial_set_targeting(VeltoInterstitial* self, VeltoTargeting* targeting) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  g_return_if_fail(!targeting || VELTO_IS_TARGETING(targeting));
  if (g_set_object(&privateOf(self).targeting, targeting)) notifyInterstitial(self, InterstitialTargeting);
}
