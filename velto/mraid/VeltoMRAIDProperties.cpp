// Reading of the property records.
#include "velto/mraid/VeltoMRAIDProperties.h"

#include "velto/network/JSONSDKVelto.h"
#include "velto/platform/foundation/Description.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

namespace velto {
namespace {

using JSONSDKVelto::boolValue;
using JSONSDKVelto::numberValue;
using JSONSDKVelto::stringValue;

// In the order of their types.
constexpr std::array<std::string_view, 7> closePositions{
    "top-left", "top-center", "top-right", "center", "bottom-left", "bottom-center", "bottom-right"};

// Toward zero, into 32 bits.
double wholePoints(double value) {
  if (std::isnan(value)) return 0;
  constexpr double least = std::numeric_limits<int32_t>::min();
  constexpr double most = std::numeric_limits<int32_t>::max();
  return std::trunc(std::clamp(value, least, most));
}

CGPoint wholePair(const std::optional<double>& first, const std::optional<double>& second) {
  return first && second ? CGPoint{wholePoints(*first), wholePoints(*second)} : CGPoint{};
}

uint64_t number(bool value) {
  return value ? 1 : 0;
}

std::string rectText(const CGRect& rect) {
  return "{{" + numberText(rect.origin.x) + ", " + numberText(rect.origin.y) + "}, {" +
         numberText(rect.size.width) + ", " + numberText(rect.size.height) + "}}";
}

}  // namespace

std::string VeltoMRAIDProperty::description() const {
  return Description("VeltoMRAIDProperty", this).text();
}

// --- expand

std::shared_ptr<VeltoMRAIDPropertyExpand> VeltoMRAIDPropertyExpand::decode(const std::string& json) {
  auto record = std::make_shared<VeltoMRAIDPropertyExpand>();
  return record->_init(json) ? record : nullptr;
}

bool VeltoMRAIDPropertyExpand::_init(const std::string& json) {
  const auto value = JSONSDKVelto::JSONDictionary(json);
  const auto* object = value ? value->object() : nullptr;
  if (!object) return false;
  useCustomClose = boolValue(*object, "useCustomClose");
  isModal = boolValue(*object, "isModal");
  width = numberValue(*object, "width");
  height = numberValue(*object, "height");
  return true;
}

std::string VeltoMRAIDPropertyExpand::description() const {
  return Description("VeltoMRAIDPropertyExpand", this)
      .field("UseCustomClose", number(useCustomClose))
      .field("IsModal", number(isModal))
      .field("Width", width)
      .field("Height", height)
      .text();
}

// --- resize

std::shared_ptr<VeltoMRAIDPropertyResize> VeltoMRAIDPropertyResize::decode(const std::string& json) {
  auto record = std::make_shared<VeltoMRAIDPropertyResize>();
  return record->_init(json) ? record : nullptr;
}

bool VeltoMRAIDPropertyResize::_init(const std::string& json) {
  const auto value = JSONSDKVelto::JSONDictionary(json);
  const auto* object = value ? value->object() : nullptr;
  if (!object) return false;
  width = numberValue(*object, "width");
  height = numberValue(*object, "height");
  offsetX = numberValue(*object, "offsetX");
  offsetY = numberValue(*object, "offsetY");
  customClosePosition = stringValue(*object, "customClosePosition");
  const auto found = std::find(closePositions.begin(), closePositions.end(), customClosePosition);
  if (found != closePositions.end()) customClosePositionType = found - closePositions.begin();
  allowOffscreen = numberValue(*object, "allowOffscreen");
  const CGPoint size = wholePair(width, height);
  frame = {wholePair(offsetX, offsetY), {size.x, size.y}};
  return true;
}

std::string VeltoMRAIDPropertyResize::description() const {
  return Description("VeltoMRAIDPropertyResize", this)
      .field("Width", width)
      .field("Height", height)
      .field("OffsetX", offsetX)
      .field("OffsetY", offsetY)
      .field("CustomClosePosition", customClosePosition)
      .field("CustomClosePositionType", static_cast<uint64_t>(customClosePositionType))
      .field("AllowOffscreen", allowOffscreen)
      .field("Frame", rectText(frame))
      .text();
}

// --- orientation

std::shared_ptr<VeltoMRAIDPropertyOrientation> VeltoMRAIDPropertyOrientation::orientation() {
  auto record = std::make_shared<VeltoMRAIDPropertyOrientation>();
  record->allowOrientationChange = true;
  return record;
}

std::shared_ptr<VeltoMRAIDPropertyOrientation> VeltoMRAIDPropertyOrientation::decode(
    const std::string& json) {
  auto record = std::make_shared<VeltoMRAIDPropertyOrientation>();
  return record->_init(json) ? record : nullptr;
}

bool VeltoMRAIDPropertyOrientation::_init(const std::string& json) {
  const auto value = JSONSDKVelto::JSONDictionary(json);
  const auto* object = value ? value->object() : nullptr;
  if (!object) return false;
  allowOrientationChange = boolValue(*object, "allowOrientationChange");
  if (auto forced = stringValue(*object, "forceOrientation")) forceOrientation = std::move(*forced);
  return true;
}

std::string VeltoMRAIDPropertyOrientation::description() const {
  return Description("VeltoMRAIDPropertyOrientation", this)
      .field("AllowOrientationChange", number(allowOrientationChange))
      .field("ForceOrientation", forceOrientation.text())
      .text();
}

// --- current application orientation

std::shared_ptr<VeltoMRAIDPropertyCurrentAppOrientation> VeltoMRAIDPropertyCurrentAppOrientation::decode(
    const std::string& json) {
  auto record = std::make_shared<VeltoMRAIDPropertyCurrentAppOrientation>();
  return record->_init(json) ? record : nullptr;
}

bool VeltoMRAIDPropertyCurrentAppOrientation::_init(const std::string& json) {
  const auto value = JSONSDKVelto::JSONDictionary(json);
  const auto* object = value ? value->object() : nullptr;
  if (!object) return false;
  locked = boolValue(*object, "locked");
  orientation = stringValue(*object, "orientation").value_or(MRAIDOrientation[MRAIDOrientationNone]);
  return true;
}

std::string VeltoMRAIDPropertyCurrentAppOrientation::description() const {
  return Description("VeltoMRAIDPropertyCurrentAppOrientation", this)
      .field("Locked", number(locked))
      .field("Orientation", orientation)
      .text();
}

}  // namespace velto
