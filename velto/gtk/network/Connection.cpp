// What libcurl is told of connections, and the transfer that only connects.
#include "velto/gtk/network/Connection.h"

#include "velto/gtk/network/LocalAddress.h"
#include "velto/gtk/network/OpenSockets.h"
#include "velto/gtk/network/RequestRules.h"
#include "velto/platform/foundation/Text.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

namespace velto::gtk {
namespace {

constexpr std::chrono::seconds longestAttempt(10);
// libcurl uses none that was idle for longer, as whatever stands between may have forgotten it (CURLOPT_MAXAGE_CONN).
constexpr std::chrono::seconds longestUnused(118);
// After which all has come that a server says first. To libcurl 7.88 one whose tickets for TLS came alone is dead.
constexpr std::chrono::seconds firstWords(1);

// No process that the application starts, or the web engine, gets to hold a connection.
curl_socket_t openSocket(void* sockets, curlsocktype, curl_sockaddr* address) noexcept {
  const int made = socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  static_cast<OpenSockets*>(sockets)->add(made);
  return made;
}

int closeSocket(void* sockets, curl_socket_t socket) noexcept {
  static_cast<OpenSockets*>(sockets)->close(socket);
  return 0;
}

// What a page names, or a server sends on to, is not of the user's own network: here it is known what every name has come to.
curl_socket_t openOutside(void* sockets, curlsocktype kind, curl_sockaddr* address) noexcept {
  return isLocalAddress(address->addr) ? CURL_SOCKET_BAD : openSocket(sockets, kind, address);
}

curl_socket_t openNone(void*, curlsocktype, curl_sockaddr*) noexcept {
  return CURL_SOCKET_BAD;
}

bool isPlain(const NSURL& url) {
  return lowercased(url.scheme().value_or("")) == "http";
}

// Whether the user has a proxy for such addresses: then it is that which is connected to, and which resolves names.
bool hasProxy(const NSURL& url) {
  const bool plain = isPlain(url);
  const std::array<const char*, 4> names{plain ? "http_proxy" : "https_proxy",
                                         plain ? "http_proxy" : "HTTPS_PROXY", "all_proxy", "ALL_PROXY"};
  return std::any_of(names.begin(), names.end(), [](const char* name) {
    const char* value = g_getenv(name);
    return value && *value;
  });
}

}  // namespace

void setUpConnection(CURL* easy, const NSURL& url, const TransportOptions& options, CURLSH* share,
                     CurlList& connectTo) {
  curl_easy_setopt(easy, CURLOPT_SHARE, share);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openSocket);
  curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, options.sockets.get());
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, closeSocket);
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, options.sockets.get());
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // a name server that does not answer holds nobody else up
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, static_cast<long>(options.requestTimeout.count()));

  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  // Rather share a connection than open another. What a plain one is capable of is only known once it has answered: behind a
  // server that hangs others would wait for ever.
  curl_easy_setopt(easy, CURLOPT_PIPEWAIT, isPlain(url) ? 0L : 1L);

  // Names and certificates are always checked.
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  if (!options.caFile.empty()) {
    curl_easy_setopt(easy, CURLOPT_CAINFO, options.caFile.c_str());
    curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);  // the system's authorities
  }
  if (const auto address = mappedAddress(options.hostMap, url); !address.empty()) {
    connectTo.reset(curl_slist_append(nullptr, ("::" + address).c_str()));
    curl_easy_setopt(easy, CURLOPT_CONNECT_TO, connectTo.get());
    curl_easy_setopt(easy, CURLOPT_PROXY, "");  // the address is meant as it stands
  } else if (!options.mayReachLocalNetwork) {
    if (!hasProxy(url))
      curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openOutside);
    else if (isLocalName(url.host().value_or("")))
      curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openNone);
  }
}

ConnectionAhead::ConnectionAhead(NSURL url, const TransportOptions& options, CURLSH* share, CURLM* multi)
    : url_(std::move(url)),
      multi_(multi),
      easy_(curl_easy_init()),
      deadline_(std::chrono::steady_clock::now() + longestAttempt) {
  setUpConnection(handle(), url_, options, share, connectTo_);
  curl_easy_setopt(handle(), CURLOPT_URL, url_.absoluteString().c_str());
  curl_easy_setopt(handle(), CURLOPT_PREREQFUNCTION, stop);
  run();
}

ConnectionAhead::~ConnectionAhead() {
  if (isRunning_) curl_multi_remove_handle(multi_, handle());
}

void ConnectionAhead::run() {
  isRunning_ = curl_multi_add_handle(multi_, handle()) == CURLM_OK;
}

bool ConnectionAhead::ended(CURLcode code) {
  curl_socket_t socket = CURL_SOCKET_BAD;
  curl_easy_getinfo(handle(), CURLINFO_ACTIVESOCKET, &socket);
  curl_multi_remove_handle(multi_, handle());
  isRunning_ = false;
  deadline_ = std::chrono::steady_clock::now() + (wasHeard_ ? longestUnused : firstWords);
  return code == CURLE_ABORTED_BY_CALLBACK && socket != CURL_SOCKET_BAD && !isUsed_;
}

bool ConnectionAhead::requested(const NSURL& url) {
  isUsed_ = isUsed_ || (url.host() == url_.host() && url.port() == url_.port());
  return !isUsed_ || isRunning_;
}

// libcurl reads when it chooses a connection. If this one proves dead it is closed, and no other made.
bool ConnectionAhead::hear() {
  if (isRunning_ || std::exchange(wasHeard_, true)) return false;
  curl_easy_setopt(handle(), CURLOPT_OPENSOCKETFUNCTION, openNone);
  deadline_ = std::chrono::steady_clock::now() + longestAttempt;
  run();
  return true;
}

}  // namespace velto::gtk
