// The server's mediation instructions: the networks that may fill a placement, in order of preference.
// Read-only records; a value of the wrong kind reads as absent. Any thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/foundation/JSON.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// The network's own parameters of an item.
class VELTO_EXPORT VeltoMediationItemEResponse {
 public:
  static std::shared_ptr<VeltoMediationItemEResponse> mediationItemEFor(const JSON::Object& object);

  const std::optional<std::string>& adUnit() const { return adUnitValue; }
  std::optional<double> timeout() const { return timeoutValue; }
  std::optional<std::string> data() const { return dataValue; }  // as it was sent
  // The data as standard base64 of UTF-8 text, foreign characters skipped; nothing when it is none.
  std::optional<std::string> base64DecodedString() const;
  std::string description() const;

  std::optional<std::string> adUnitValue;
  std::optional<std::string> dataValue;
  std::optional<double> timeoutValue;  // seconds; sent in milliseconds
};

class VELTO_EXPORT VeltoMediationItemResponse {
 public:
  static std::vector<std::shared_ptr<VeltoMediationItemResponse>> mediationItemsFor(const JSON::Array& array);
  static std::shared_ptr<VeltoMediationItemResponse> _init(const JSON::Object& object);

  const std::optional<std::string>& cn() const { return cnValue; }
  const std::shared_ptr<VeltoMediationItemEResponse>& e() const { return eValue; }
  const std::optional<std::string>& t() const { return tValue; }
  const std::optional<std::string>& n() const { return nValue; }
  std::string description() const;

  std::optional<std::string> cnValue;  // class name of the adapter
  std::shared_ptr<VeltoMediationItemEResponse> eValue;
  std::optional<std::string> tValue;  // labels, carried only
  std::optional<std::string> nValue;
  size_t place = 0;  // in the list that it was read from
};

class VELTO_EXPORT VeltoMediationResponse {
 public:
  using Items = std::vector<std::shared_ptr<VeltoMediationItemResponse>>;

  static std::shared_ptr<VeltoMediationResponse> mediationFor(const JSON::Object& object);

  const std::optional<std::string>& connId() const { return connectionId; }
  std::optional<double> timeout() const { return timeoutValue; }
  const std::optional<Items>& mediations() const { return mediationItems; }
  std::string description() const;

  std::optional<std::string> connectionId;
  std::optional<double> timeoutValue;   // as sent
  std::optional<Items> mediationItems;  // nothing when the server sent no list

 private:
  void _init(const JSON::Object& object);
};

}  // namespace velto
