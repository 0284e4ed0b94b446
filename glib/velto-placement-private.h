// What banners and interstitials tell of their loads.
#pragma once

#include <memory>
#include <vector>

#include "velto-private.h"

namespace velto_glib {

// As a list of VeltoTimeline, which the caller owns.
GList* timelinesFrom(std::vector<velto::VeltoAdTimeline> told);

// For who waits for a load that has ended without a word.
template <class Ad>
velto::VeltoErrorAd whyLost(const std::shared_ptr<Ad>& ad) {
  const auto told = ad ? ad->veltoAdTimeline() : std::vector<velto::VeltoAdTimeline>();
  if (told.empty() || !told.back().end)
    return velto::VeltoErrorAd::veltoErrorAdWithCode(velto::VeltoErrorServer);
  return velto::VeltoErrorAd::because(*told.back().end);
}

}  // namespace velto_glib
