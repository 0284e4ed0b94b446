// getifaddrs and the routing table of Linux.
#include "velto/gtk/network/Interfaces.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <netpacket/packet.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>

namespace velto::gtk {
namespace {

struct FreeAddresses {
  void operator()(ifaddrs* list) const { freeifaddrs(list); }
};
using Addresses = std::unique_ptr<ifaddrs, FreeAddresses>;

Addresses readAddresses() {
  ifaddrs* list = nullptr;
  return Addresses(getifaddrs(&list) == 0 ? list : nullptr);
}

bool beginsWithOneOf(const std::string& name, std::initializer_list<const char*> prefixes) {
  return std::any_of(prefixes.begin(), prefixes.end(),
                     [&](const char* prefix) { return name.starts_with(prefix); });
}

bool isMobile(const std::string& name) {
  return beginsWithOneOf(name, {"wwan", "wwp", "ppp", "rmnet"});
}

// Wired and wireless adapters by the names that the kernel and systemd give them; no bridges, tunnels or
// containers.
bool isAdapter(const std::string& name) {
  return !isMobile(name) && beginsWithOneOf(name, {"en", "eth", "wl"});
}

// The interface of the IPv4 default route with the lowest metric; empty without one.
std::string defaultRoute() {
  constexpr unsigned isRouteUp = 1;  // RTF_UP
  std::ifstream table("/proc/net/route");
  std::string line, best;
  unsigned long bestMetric = std::numeric_limits<unsigned long>::max();
  std::getline(table, line);  // the headings
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string name, destination, gateway, mask;
    unsigned flags = 0;
    unsigned long references = 0, use = 0, metric = 0;
    fields >> name >> destination >> gateway >> std::hex >> flags >> std::dec >> references >> use >>
        metric >> mask;
    const bool isDefault = fields && destination == "00000000" && mask == "00000000" && (flags & isRouteUp);
    if (!isDefault || metric >= bestMetric) continue;
    best = name;
    bestMetric = metric;
  }
  return best;
}

bool hasDefaultRoute6() {
  constexpr unsigned isRouteUp = 1, isRejected = 0x200;  // RTF_UP, RTF_REJECT
  std::ifstream table("/proc/net/ipv6_route");
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::string destination, length, source, sourceLength, gateway, metric, references, use;
    unsigned flags = 0;
    fields >> destination >> length >> source >> sourceLength >> gateway >> metric >> references >> use >>
        std::hex >> flags;
    if (fields && length == "00" && destination.find_first_not_of('0') == std::string::npos &&
        (flags & isRouteUp) && !(flags & isRejected))
      return true;
  }
  return false;
}

bool isUsable(const ifaddrs& entry) {
  return (entry.ifa_flags & IFF_UP) && !(entry.ifa_flags & IFF_LOOPBACK);
}

// The interface that counts as the local network: the default route's if it is one of Ethernet's kind (which
// wireless ones and bridges are too), else the first adapter that is up; empty without any.
std::string localInterface(const ifaddrs* list, const std::string& route) {
  std::string firstAdapter;
  for (const auto* entry = list; entry; entry = entry->ifa_next) {
    if (!isUsable(*entry) || !entry->ifa_addr || entry->ifa_addr->sa_family != AF_PACKET) continue;
    std::string name = entry->ifa_name;
    const bool isEthernet = reinterpret_cast<const sockaddr_ll*>(entry->ifa_addr)->sll_hatype == ARPHRD_ETHER;
    if (isEthernet && name == route && !isMobile(name)) return name;
    if (isEthernet && firstAdapter.empty() && isAdapter(name)) firstAdapter = name;
  }
  return firstAdapter;
}

bool isLinkLocal(const sockaddr& address) {
  return address.sa_family == AF_INET6 &&
         IN6_IS_ADDR_LINKLOCAL(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
}

NetworkInterfaceAddress described(const ifaddrs& entry) {
  NetworkInterfaceAddress result{entry.ifa_name, (entry.ifa_flags & IFF_UP) != 0, AddressFamily::Other, {}};
  if (!entry.ifa_addr) return result;
  const void* bytes = nullptr;
  const int family = entry.ifa_addr->sa_family;
  if (family == AF_INET) {
    result.family = AddressFamily::IPv4;
    bytes = &reinterpret_cast<const sockaddr_in*>(entry.ifa_addr)->sin_addr;
  } else if (family == AF_INET6) {
    result.family = AddressFamily::IPv6;
    bytes = &reinterpret_cast<const sockaddr_in6*>(entry.ifa_addr)->sin6_addr;
  } else {
    return result;
  }
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (inet_ntop(family, bytes, text.data(), text.size())) result.text = text.data();
  return result;
}

std::optional<std::vector<NetworkInterfaceAddress>> interfaceAddresses(const std::string& route) {
  const Addresses list = readAddresses();
  if (!list) return std::nullopt;
  const std::string local = localInterface(list.get(), route);
  std::vector<NetworkInterfaceAddress> result;
  for (const auto* entry = list.get(); entry; entry = entry->ifa_next) {
    result.push_back(described(*entry));
    auto known = result.back();
    // Outside its own link a link-local address says nothing, and it would hide the interface's real one.
    if (known.text.empty() || isLinkLocal(*entry->ifa_addr)) continue;
    if (isMobile(known.interfaceName))
      known.interfaceName = "pdp_ip0";
    else if (known.interfaceName == local)
      known.interfaceName = "en0";
    else
      continue;
    result.push_back(std::move(known));
  }
  return result;
}

}  // namespace

std::optional<std::vector<NetworkInterfaceAddress>> systemInterfaceAddresses() {
  return interfaceAddresses(defaultRoute());
}

bool hasDefaultRoute() {
  return !defaultRoute().empty() || hasDefaultRoute6();
}

std::string wayToInternet() {
  std::string way = defaultRoute();
  const auto addresses = interfaceAddresses(way);
  if (!addresses) return way;
  for (const auto& address : *addresses)
    if (address.interfaceName == "en0" || address.interfaceName == "pdp_ip0") way += ' ' + address.text;
  return way;
}

bool isDefaultRouteMobile() {
  return isMobile(defaultRoute());
}

}  // namespace velto::gtk
