// The special addresses of RFC 6890, as far as somebody may listen there.
#include "velto/gtk/network/LocalAddress.h"

#include "velto/platform/foundation/GMemory.h"
#include "velto/platform/foundation/Text.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <algorithm>
#include <vector>

namespace velto::gtk {
namespace {

using Mask = GPtr<GInetAddressMask>;

constexpr gsize bytesOfIPv4 = 4;

Mask mask(const char* text) {
  return Mask::adopt(g_inet_address_mask_new_from_string(text, nullptr));
}

// The first block of IPv6 has the loopback address and all ways of writing an IPv4 address as one of IPv6.
const std::vector<Mask>& localBlocks() {
  static const auto blocks = [] {
    std::vector<Mask> made;
    for (const char* text :
         {"0.0.0.0/8", "10.0.0.0/8", "100.64.0.0/10", "127.0.0.0/8", "169.254.0.0/16", "172.16.0.0/12",
          "192.0.0.0/24", "192.168.0.0/16", "198.18.0.0/15", "224.0.0.0/3", "::/8", "2002::/16", "fc00::/7",
          "fe80::/10", "fec0::/10", "ff00::/8"})
      made.push_back(mask(text));
    return made;
  }();
  return blocks;
}

bool isInLocalBlock(GInetAddress* address) {
  // Where a network has IPv6 alone, this is how it writes the internet's other half (RFC 6052).
  static const Mask translated = mask("64:ff9b::/96");
  if (g_inet_address_mask_matches(translated, address)) {
    const guint8* bytes = g_inet_address_to_bytes(address);
    const auto inner = GPtr<GInetAddress>::adopt(g_inet_address_new_from_bytes(
        bytes + g_inet_address_get_native_size(address) - bytesOfIPv4, G_SOCKET_FAMILY_IPV4));
    return isInLocalBlock(inner);
  }
  return std::any_of(localBlocks().begin(), localBlocks().end(),
                     [&](const Mask& block) { return g_inet_address_mask_matches(block, address); });
}

GPtr<GInetAddress> addressFrom(const sockaddr* address) {
  if (address && address->sa_family == AF_INET)
    return GPtr<GInetAddress>::adopt(g_inet_address_new_from_bytes(
        reinterpret_cast<const guint8*>(&reinterpret_cast<const sockaddr_in*>(address)->sin_addr),
        G_SOCKET_FAMILY_IPV4));
  if (address && address->sa_family == AF_INET6)
    return GPtr<GInetAddress>::adopt(g_inet_address_new_from_bytes(
        reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr.s6_addr, G_SOCKET_FAMILY_IPV6));
  return {};
}

// A machine that has an address of the internet serves there what it serves its neighbours.
bool isOwn(GInetAddress* address) {
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return false;
  const GOwned<ifaddrs, freeifaddrs> owner(list);
  for (const auto* entry = list; entry; entry = entry->ifa_next) {
    const auto own = addressFrom(entry->ifa_addr);
    if (own && g_inet_address_equal(own, address)) return true;
  }
  return false;
}

}  // namespace

bool isLocalAddress(GInetAddress* address) {
  return isInLocalBlock(address) || isOwn(address);
}

bool isLocalAddress(const sockaddr& address) {
  const auto found = addressFrom(&address);
  return !found || isLocalAddress(found);
}

bool isLocalName(const std::string& host) {
  if (const auto address = GPtr<GInetAddress>::adopt(g_inet_address_new_from_string(host.c_str())))
    return isLocalAddress(address);
  std::string name = lowercased(host);
  if (name.ends_with('.')) name.pop_back();
  in_addr number{};  // as in 127.1, 0177.0.0.1 and 0x7f.0.0.1, which are no names to those who connect
  if (inet_aton(name.c_str(), &number))
    return isLocalAddress(GPtr<GInetAddress>::adopt(g_inet_address_new_from_bytes(
        reinterpret_cast<const guint8*>(&number.s_addr), G_SOCKET_FAMILY_IPV4)));
  if (name.find('%') != std::string::npos) return true;
  const auto isBelow = [&](const char* domain) { return name.ends_with(domain); };
  return name.find('.') == std::string::npos || isBelow(".localhost") || isBelow(".local") ||
         isBelow(".internal") || isBelow(".home.arpa") || isBelow(".lan");
}

}  // namespace velto::gtk
