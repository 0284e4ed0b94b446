// Reading mediation instructions.
#include "velto/ads/VeltoMediationResponse.h"

#include "velto/network/JSONSDKVelto.h"
#include "velto/platform/foundation/Description.h"

namespace velto {

using namespace JSONSDKVelto;

std::shared_ptr<VeltoMediationItemEResponse> VeltoMediationItemEResponse::mediationItemEFor(
    const JSON::Object& object) {
  auto made = std::make_shared<VeltoMediationItemEResponse>();
  made->adUnitValue = stringValue(object, "adunit");
  made->dataValue = stringValue(object, "data");
  if (const auto milliseconds = numberValue(object, "timeout")) made->timeoutValue = *milliseconds / 1000.0;
  return made;
}

std::optional<std::string> VeltoMediationItemEResponse::base64DecodedString() const {
  auto text = dataValue ? base64Decode(*dataValue) : std::nullopt;
  return text && isValidUTF8(*text) ? text : std::nullopt;
}

std::string VeltoMediationItemEResponse::description() const {
  return Description("VeltoMediationItemEResponse", this)
      .field("AdUnit", adUnitValue)
      .field("Timeout", timeoutValue)
      .field("Data", dataValue)
      .field("Base64DecodedString", base64DecodedString())
      .text();
}

std::vector<std::shared_ptr<VeltoMediationItemResponse>> VeltoMediationItemResponse::mediationItemsFor(
    const JSON::Array& array) {
  static const JSON::Object nothing;
  std::vector<std::shared_ptr<VeltoMediationItemResponse>> items;
  items.reserve(array.size());
  // An element that is no object still takes its place in the order, and no adapter will want it.
  for (const auto& element : array) {
    items.push_back(_init(element.object() ? *element.object() : nothing));
    items.back()->place = items.size() - 1;
  }
  return items;
}

std::shared_ptr<VeltoMediationItemResponse> VeltoMediationItemResponse::_init(const JSON::Object& object) {
  auto made = std::make_shared<VeltoMediationItemResponse>();
  made->cnValue = stringValue(object, "cn");
  if (const auto* parameters = dictionaryValue(object, "e"))
    made->eValue = VeltoMediationItemEResponse::mediationItemEFor(*parameters);
  made->tValue = stringValue(object, "t");
  made->nValue = stringValue(object, "n");
  return made;
}

std::string VeltoMediationItemResponse::description() const {
  return Description("VeltoMediationItemResponse", this)
      .field("Cn", cnValue)
      .field("E", eValue ? std::optional(eValue->description()) : std::nullopt)
      .field("T", tValue)
      .field("N", nValue)
      .text();
}

std::shared_ptr<VeltoMediationResponse> VeltoMediationResponse::mediationFor(const JSON::Object& object) {
  auto made = std::make_shared<VeltoMediationResponse>();
  made->_init(object);
  return made;
}

void VeltoMediationResponse::_init(const JSON::Object& object) {
  connectionId = stringValue(object, "conn_id");
  timeoutValue = numberValue(object, "timeout");
  if (const auto* list = arrayValue(object, "mediation"))
    mediationItems = VeltoMediationItemResponse::mediationItemsFor(*list);
}

std::string VeltoMediationResponse::description() const {
  std::optional<std::string> items;
  if (mediationItems) {
    items = "(";
    for (const auto& item : *mediationItems) *items += "\n    " + item->description();
    *items += "\n)";
  }
  return Description("VeltoMediationResponse", this)
      .field("ConnectionId", connectionId)
      .field("Timeout", timeoutValue)
      .field("Mediations", items)
      .text();
}

}  // namespace velto
