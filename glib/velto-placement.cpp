// What a banner or an interstitial is called, and what became of its loads.
#include "velto-banner-private.h"
#include "velto-interstitial-private.h"
#include "velto-placement-private.h"

using namespace velto_glib;

static bool take(std::optional<std::string>& placement, const char* name) {
  auto taken = name ? std::optional<std::string>(name) : std::nullopt;
  if (placement == taken) return false;
  placement = std::move(taken);
  return true;
}

/**
 * velto_banner_get_placement: (get-property placement)
 * @self: a banner
 *
 * Gets what logs, timelines and metrics call it.
 *
 * Returns: (nullable) (transfer none): the name, or %NULL for "banner"
 *
 * Since: 1.0
 */
const char* velto_banner_get_placement(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  const auto& placement = privateOf(self).placement;
  return placement ? placement->c_str() : nullptr;
}

/**
 * velto_banner_set_placement: (set-property placement)
 * @self: a banner
 * @placement: (nullable): the name, or %NULL for "banner"
 *
 * Sets what logs, timelines and metrics call it, from the next load on.
 *
 * Since: 1.0
 */
void velto_banner_set_placement(VeltoBanner* self, const char* placement) {
  g_return_if_fail(VELTO_IS_BANNER(self));
  velto_return_if_elsewhere();
  if (!take(privateOf(self).placement, placement)) return;
  passOnValues(privateOf(self));
  notifyBanner(self, BannerPlacement);
}

/**
 * velto_banner_get_timelines:
 * @self: a banner
 *
 * Gets what became of its last loads, at most 32 since it was cleared.
 *
 * Returns: (transfer full) (element-type VeltoTimeline): the timelines, oldest first
 *
 * Since: 1.0
 */
GList* velto_banner_get_timelines(VeltoBanner* self) {
  g_return_val_if_fail(VELTO_IS_BANNER(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  const auto& ad = privateOf(self).ad;
  return ad ? timelinesFrom(ad->veltoAdTimeline()) : nullptr;
}

/**
 * velto_interstitial_get_placement: (get-property placement)
 * @self: an interstitial
 *
 * Gets what logs, timelines and metrics call it.
 *
 * Returns: (nullable) (transfer none): the name, or %NULL for "interstitial"
 *
 * Since: 1.0
 */
const char* velto_interstitial_get_placement(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  const auto& placement = privateOf(self).placement;
  return placement ? placement->c_str() : nullptr;
}

/**
 * velto_interstitial_set_placement: (set-property placement)
 * @self: an interstitial
 * @placement: (nullable): the name, or %NULL for "interstitial"
 *
 * Sets what logs, timelines and metrics call it, from the next load on.
 *
 * Since: 1.0
 */
void velto_interstitial_set_placement(VeltoInterstitial* self, const char* placement) {
  g_return_if_fail(VELTO_IS_INTERSTITIAL(self));
  velto_return_if_elsewhere();
  if (take(privateOf(self).placement, placement)) notifyInterstitial(self, InterstitialPlacement);
}

/**
 * velto_interstitial_get_timelines:
 * @self: an interstitial
 *
 * Gets what became of its last loads, at most 32 since it was cleared.
 *
 * Returns: (transfer full) (element-type VeltoTimeline): the timelines, oldest first
 *
 * Since: 1.0
 */
GList* velto_interstitial_get_timelines(VeltoInterstitial* self) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  const auto& ad = privateOf(self).ad;
  return ad ? timelinesFrom(ad->veltoAdTimeline()) : nullptr;
}
