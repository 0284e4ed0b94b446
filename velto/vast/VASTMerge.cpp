// The lists of wrapper and ad become one.
#include "velto/vast/VASTMerge.h"

#include "velto/vast/VASTDocument.h"

#include <algorithm>

namespace velto {
namespace {

// About as much as they take.
size_t bytesOf(const std::string& text) {
  return sizeof(std::string) + text.size();
}
size_t bytesOf(const VASTTracking& tracking) {
  return sizeof tracking + tracking.event.size() + tracking.url.size();
}
size_t bytesOf(const VASTInteractiveFile& file) {
  return sizeof file + file.url.size() + file.type.size() + file.apiFramework.size();
}
size_t bytesOf(const VASTExtension& extension) {
  return sizeof extension + extension.type.size() + extension.markup.size();
}
size_t bytesOf(const VASTResource& resource) {
  return sizeof resource + resource.content.size() + resource.creativeType.size();
}
size_t bytesOf(const VASTVerification::Script& script) {
  return sizeof script + script.url.size() + script.apiFramework.size();
}
template <class Value>
size_t bytesOf(const std::vector<Value>& list) {
  size_t all = 0;
  for (const auto& one : list) all += bytesOf(one);
  return all;
}
size_t bytesOf(const VASTVerification& one) {
  return sizeof one + one.vendor.size() + one.parameters.size() + bytesOf(one.scripts) +
         bytesOf(one.notExecuted);
}
size_t bytesOf(const VASTIcon& icon) {
  return sizeof icon + icon.program.size() + icon.xPosition.size() + icon.yPosition.size() +
         icon.clickThrough.size() + bytesOf(icon.resources) + bytesOf(icon.clickTrackings) +
         bytesOf(icon.viewTrackings);
}
size_t bytesOf(const VASTCompanion& companion) {
  return sizeof companion + companion.id.size() + companion.adSlotId.size() + companion.altText.size() +
         companion.apiFramework.size() + companion.adParameters.size() + companion.clickThrough.size() +
         bytesOf(companion.resources) + bytesOf(companion.clickTrackings) + bytesOf(companion.trackings);
}

template <class Value>
void add(std::vector<Value>& to, const Value& value, size_t& room) {
  const size_t bytes = bytesOf(value);
  if (to.size() >= VASTDocument::mostOfAKind || bytes > room) return;
  room -= bytes;
  to.push_back(value);
}

template <class Value>
void addAll(std::vector<Value>& to, const std::vector<Value>& from, size_t& room) {
  for (const auto& value : from) add(to, value, room);
}

}  // namespace

void addVASTLinear(VASTLinear& to, const VASTLinear& from, size_t& room) {
  addAll(to.trackings, from.trackings, room);
  addAll(to.clickTrackings, from.clickTrackings, room);
  addAll(to.customClicks, from.customClicks, room);
  addAll(to.interactiveFiles, from.interactiveFiles, room);
  if (to.clickThrough.empty() && from.clickThrough.size() <= room) {
    to.clickThrough = from.clickThrough;
    room -= from.clickThrough.size();
  }
  const auto own = to.icons.size();
  for (const auto& icon : from.icons) {
    const auto end = to.icons.begin() + static_cast<std::ptrdiff_t>(own);
    const bool isThere = !icon.program.empty() && std::any_of(to.icons.begin(), end, [&](const auto& other) {
      return other.program == icon.program;
    });
    if (!isThere) add(to.icons, icon, room);
  }
}

// What is paid for comes first.
void addVASTWrapper(VASTAd& ad, const VASTAd& wrapper, size_t& room) {
  addAll(ad.impressions, wrapper.impressions, room);
  addAll(ad.errors, wrapper.errors, room);
  addAll(ad.viewableImpression.viewable, wrapper.viewableImpression.viewable, room);
  addAll(ad.viewableImpression.notViewable, wrapper.viewableImpression.notViewable, room);
  addAll(ad.viewableImpression.undetermined, wrapper.viewableImpression.undetermined, room);
  if (ad.linear && wrapper.linear) addVASTLinear(*ad.linear, *wrapper.linear, room);
  addAll(ad.verifications, wrapper.verifications, room);
  // The companions that are nearest to the ad.
  if (ad.companions.empty()) {
    addAll(ad.companions, wrapper.companions, room);
    ad.companionsRequired = wrapper.companionsRequired;
  }
  addAll(ad.extensions, wrapper.extensions, room);
  if (!ad.pricing) ad.pricing = wrapper.pricing;
  // A wrapper's place in its pod is that of the ad for which it stands.
  if (wrapper.sequence && !ad.sequence) ad.sequence = wrapper.sequence;
}

}  // namespace velto
