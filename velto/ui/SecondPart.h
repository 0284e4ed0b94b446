// What a two-part rich-media ad keeps for its first part while the second is fetched and shown. Owned by the shown ad;
// main thread.
#pragma once

#include "velto/mraid/VeltoMRAIDAction.h"
#include "velto/mraid/VeltoMRAIDHandler.h"
#include "velto/platform/foundation/NSURL.h"

#include <memory>
#include <utility>
#include <vector>

namespace velto {

class SecondPart {
 public:
  void fetchBegins() { isOnItsWay_ = true; }

  // Commands that change the ad come after the second part is there. What a person may have touched the ad for does
  // not wait. True when it was kept.
  bool keeps(const NSURL& command) {
    const auto name = command.host().value_or("");
    const bool changesAd = name == "expand" || name == "resize" || name == "close";
    if (!isOnItsWay_ || !changesAd) return false;
    if (kept_.size() < mostKept) kept_.push_back(command);
    return true;
  }
  std::vector<NSURL> fetchEnds() {
    isOnItsWay_ = false;
    return std::exchange(kept_, {});
  }

  // Neither part has the properties that the other has set.
  void opens(VeltoMRAIDHandler& handler) {
    expandProperty_ = std::exchange(handler.expandProperty, nullptr);
    resizeProperty_ = std::exchange(handler.resizeProperty, nullptr);
    orientationProperty_ = handler.heldOrientationProperty();  // which the expansion itself goes by
  }
  // What the first says of itself while the second is shown counts when it is back; it does not resize below it.
  // True when nothing more is to be done.
  bool takes(const NSURL& command) {
    const auto action = VeltoMRAIDAction::actionFrom(command);
    if (!action) return false;
    const auto& args = action->args();
    switch (action->actionType()) {
      case VeltoMRAIDActionResize:
        return true;
      case VeltoMRAIDActionSetExpandProperties:
        if (args) expandProperty_ = VeltoMRAIDPropertyExpand::decode(*args);
        return true;
      case VeltoMRAIDActionSetResizeProperties:
        if (args) resizeProperty_ = VeltoMRAIDPropertyResize::decode(*args);
        return true;
      case VeltoMRAIDActionSetOrientationProperties:
        if (auto property = args ? VeltoMRAIDPropertyOrientation::decode(*args) : nullptr)
          orientationProperty_ = std::move(property);
        return true;
      default:
        return false;
    }
  }
  void closes(VeltoMRAIDHandler& handler) {
    handler.expandProperty = std::move(expandProperty_);
    handler.resizeProperty = std::move(resizeProperty_);
    if (orientationProperty_ != handler.heldOrientationProperty())
      handler.setOrientationProperty(orientationProperty_);
  }

 private:
  static constexpr size_t mostKept = 256;

  bool isOnItsWay_ = false;
  std::vector<NSURL> kept_;
  std::shared_ptr<VeltoMRAIDPropertyExpand> expandProperty_;
  std::shared_ptr<VeltoMRAIDPropertyResize> resizeProperty_;
  std::shared_ptr<VeltoMRAIDPropertyOrientation> orientationProperty_;
};

}  // namespace velto
