// Where requests go: the server names, and the URLs made from them.
#pragma once

#include "velto/Export.h"
#include "velto/platform/foundation/NSURL.h"

#include <optional>
#include <string>

namespace velto {

// Host names, with a port where it is not 443 ("localhost:8443"). A custom endpoint is a sub-domain of
// `publisher`.
struct VeltoServerNames {
  std::string adServer;
  std::string publisher;
  std::string tracking;
  bool operator==(const VeltoServerNames&) const = default;
};

class VELTO_EXPORT VeltoURL {
 public:
  // Changes the names for this process; call it before the first registration. The build's own stand until
  // then, and come back for an empty name. Any thread.
  static void setServerNames(VeltoServerNames names);
  static VeltoServerNames serverNames();

  // Each is nothing when no URL can be formed from the names and the endpoint. Any thread.
  static std::optional<NSURL> _baseURL(const std::optional<std::string>& endpoint);
  static std::optional<NSURL> _baseURL() { return _baseURL(std::nullopt); }
  static std::optional<NSURL> veltoURL();     // ad requests, by the stored endpoint
  static std::optional<NSURL> veltoSSPURL();  // mediation data, always on the ad server
  static std::optional<NSURL> _veltoBaseTrackURL();
  static std::optional<NSURL> veltoTrackInstallURL();
  static std::optional<NSURL> veltoTrackClickURL();
};

}  // namespace velto
