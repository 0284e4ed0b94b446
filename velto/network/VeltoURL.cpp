// Server names and request URLs.
#include "velto/network/VeltoURL.h"

#include "velto/core/VeltoDataStore.h"

#include <mutex>

namespace velto {
namespace {

constexpr char scheme[] = "https://";

std::mutex namesMutex;

VeltoServerNames& names() {
  static VeltoServerNames current{VELTO_AD_SERVER_HOST, VELTO_PUBLISHER_HOST, VELTO_TRACKING_HOST};
  return current;
}

std::optional<NSURL> parsedHost(const std::string& host) {
  // A host is all that a name or endpoint may hold: a slash or the like would move the request elsewhere.
  if (host.empty() || host.find_first_of("/?#@\\") != std::string::npos) return std::nullopt;
  auto url = NSURL::URLWithString(scheme + host);
  return url && url->host() && !url->host()->empty() ? url : std::nullopt;
}

// Nearly all requests of a process go to one host: the last is kept as it was taken apart.
std::optional<NSURL> urlOfHost(const std::string& host) {
  static std::mutex mutex;
  static std::string lastHost;
  static std::optional<NSURL> lastURL;
  std::lock_guard lock(mutex);
  if (host != lastHost) {
    lastURL = parsedHost(host);
    lastHost = host;
  }
  return lastURL;
}

std::optional<NSURL> appending(const std::optional<NSURL>& base, const char* path) {
  return base ? std::optional(base->URLByAppendingPathComponent(path)) : std::nullopt;
}

}  // namespace

void VeltoURL::setServerNames(VeltoServerNames wanted) {
  const VeltoServerNames built{VELTO_AD_SERVER_HOST, VELTO_PUBLISHER_HOST, VELTO_TRACKING_HOST};
  if (wanted.adServer.empty()) wanted.adServer = built.adServer;
  if (wanted.publisher.empty()) wanted.publisher = built.publisher;
  if (wanted.tracking.empty()) wanted.tracking = built.tracking;
  std::lock_guard lock(namesMutex);
  names() = std::move(wanted);
}

VeltoServerNames VeltoURL::serverNames() {
  std::lock_guard lock(namesMutex);
  return names();
}

std::optional<NSURL> VeltoURL::_baseURL(const std::optional<std::string>& endpoint) {
  const auto current = serverNames();
  if (!endpoint || endpoint->empty()) return urlOfHost(current.adServer);
  return urlOfHost(*endpoint + "." + current.publisher);
}

std::optional<NSURL> VeltoURL::veltoURL() {
  const auto endpoint = VeltoDataStore::getVeltoEndpoint();
  return appending(_baseURL(endpoint), !endpoint || endpoint->empty() ? "sdk/v3/req" : "sdk/");
}

std::optional<NSURL> VeltoURL::veltoSSPURL() {
  return appending(_baseURL(), "dev/puressp.php");
}
std::optional<NSURL> VeltoURL::_veltoBaseTrackURL() {
  return urlOfHost(serverNames().tracking);
}
std::optional<NSURL> VeltoURL::veltoTrackInstallURL() {
  return appending(_veltoBaseTrackURL(), "trk_install.php");
}
std::optional<NSURL> VeltoURL::veltoTrackClickURL() {
  return appending(_veltoBaseTrackURL(), "trk_click.php");
}

}  // namespace velto
