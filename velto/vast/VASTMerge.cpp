// The lists of wrapper and ad become one.
#include "velto/vast/VASTMerge.h"

#include <algorithm>

namespace velto {
namespace {

template <class Value>
void addAll(std::vector<Value>& to, const std::vector<Value>& from) {
  to.insert(to.end(), from.begin(), from.end());
}

}  // namespace

void addVASTLinear(VASTLinear& to, const VASTLinear& from) {
  addAll(to.trackings, from.trackings);
  addAll(to.clickTrackings, from.clickTrackings);
  addAll(to.customClicks, from.customClicks);
  addAll(to.interactiveFiles, from.interactiveFiles);
  if (to.clickThrough.empty()) to.clickThrough = from.clickThrough;
  const auto own = to.icons;
  for (const auto& icon : from.icons) {
    const bool isThere = !icon.program.empty() && std::any_of(own.begin(), own.end(), [&](const auto& other) {
      return other.program == icon.program;
    });
    if (!isThere) to.icons.push_back(icon);
  }
}

void addVASTWrapper(VASTAd& ad, const VASTAd& wrapper) {
  addAll(ad.impressions, wrapper.impressions);
  addAll(ad.errors, wrapper.errors);
  addAll(ad.viewableImpression.viewable, wrapper.viewableImpression.viewable);
  addAll(ad.viewableImpression.notViewable, wrapper.viewableImpression.notViewable);
  addAll(ad.viewableImpression.undetermined, wrapper.viewableImpression.undetermined);
  addAll(ad.verifications, wrapper.verifications);
  addAll(ad.extensions, wrapper.extensions);
  if (!ad.pricing) ad.pricing = wrapper.pricing;
  if (ad.linear && wrapper.linear) addVASTLinear(*ad.linear, *wrapper.linear);
  // The companions that are nearest to the ad.
  if (ad.companions.empty()) {
    ad.companions = wrapper.companions;
    ad.companionsRequired = wrapper.companionsRequired;
  }
  // A wrapper's place in its pod is that of the ad for which it stands.
  if (wrapper.sequence && !ad.sequence) ad.sequence = wrapper.sequence;
}

}  // namespace velto
