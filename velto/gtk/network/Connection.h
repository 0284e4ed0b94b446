// Connections to servers, as libcurl makes them for transfers. Transport thread.
#pragma once

#include "velto/gtk/network/UrlSession.h"
#include "velto/platform/foundation/GMemory.h"
#include "velto/platform/foundation/NSURL.h"

#include <curl/curl.h>

#include <chrono>

namespace velto::gtk {

using CurlEasy = GOwned<CURL, curl_easy_cleanup>;
using CurlList = GOwned<curl_slist, curl_slist_free_all>;

// Where a handle's connection goes, whom it trusts and what it speaks. It is the same for all handles: libcurl gives a
// connection to another transfer only if both agree. The list is the handle's, and lives as long.
void setUpConnection(CURL* easy, const NSURL& url, const TransportOptions& options, CURLSH* share,
                     CurlList& connectTo);

// A connection that is made before there is a request for it. libcurl has no operation for that, so this is a transfer
// that ends itself in the moment before it would send. A connection that carries many requests (HTTP/2) is then left to
// those that come; libcurl closes one that carries a single request at a time, of which the name remains.
class ConnectionAhead {
 public:
  using Time = std::chrono::steady_clock::time_point;

  ConnectionAhead(NSURL url, const TransportOptions& options, CURLSH* share, CURLM* multi);
  ConnectionAhead(const ConnectionAhead&) = delete;
  ConnectionAhead& operator=(const ConnectionAhead&) = delete;
  ~ConnectionAhead();  // what is made stays with libcurl, what is in the making ends

  CURL* handle() const { return easy_.get(); }
  // The handle's transfer ended. Returns whether there is a connection that nobody has used.
  bool ended(CURLcode code);
  // A request goes somewhere. Returns whether this is still to be looked after.
  bool requested(const NSURL& url);
  // When the attempt has lasted too long, the server is to be heard, or the connection is to be given back.
  Time deadline() const { return deadline_; }
  // A server speaks first, with its settings and tickets for TLS, and some close what gives them no answer. So a while after
  // a connection is made this takes it in, once. Returns whether that was due.
  bool hear();

 private:
  static int stop(void*, char*, char*, int, int) noexcept { return CURL_PREREQFUNC_ABORT; }
  void run();

  const NSURL url_;
  CURLM* const multi_;
  CurlList connectTo_;
  CurlEasy easy_;
  bool isRunning_ = false;
  bool isUsed_ = false;
  bool wasHeard_ = false;
  Time deadline_;
};

}  // namespace velto::gtk
