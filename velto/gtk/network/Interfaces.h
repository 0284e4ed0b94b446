// The kernel's list of network interfaces, and which of them play the parts of a phone's. Any thread.
#pragma once

#include "velto/platform/Network.h"

#include <optional>
#include <string>
#include <vector>

namespace velto::gtk {

// Every address under the kernel's name of its interface; after it, once more under "en0" when it belongs to
// the local network that leads to the internet, or under "pdp_ip0" when it belongs to a mobile modem. Nothing
// when the list cannot be read.
std::optional<std::vector<NetworkInterfaceAddress>> systemInterfaceAddresses();

// Whether packets for the internet have a way out, by IPv4 or IPv6.
bool hasDefaultRoute();

// The interface of the default route, and the addresses that lead to the internet, as one text. Connections that were
// made while it was another may be dead.
std::string wayToInternet();

// Whether the default route goes through a mobile modem.
bool isDefaultRouteMobile();

}  // namespace velto::gtk
