// HTTP for the whole process: one thread, one pool of connections, HTTP/2 where the server speaks it.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/NSURLSession.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velto::gtk {

class OpenSockets;

// What a phone's default configuration fixes, with its values where they apply.
struct TransportOptions {
  // A request fails when no data came or went for this long (at least a second).
  std::chrono::seconds requestTimeout{60};
  // And when it has not ended after this long, redirects included, whatever came: a server that says a byte now and then
  // would hold it for as long as it likes.
  std::chrono::milliseconds longestRequest = std::chrono::minutes(10);
  int mostConnectionsToOneHost = 6;
  size_t largestBody = size_t{256} << 20;  // bytes, decompressed; a request may ask for less
  size_t mostHeaderFields = 2000;          // of one answer, with its interim ones (status 1xx)
  std::filesystem::path caFile = {};  // certificate authorities instead of the system's; empty: the system's
  std::vector<HostMapping> hostMap = {};  // the first that matches counts
  // Whether what `hostMap` does not name may be of the user's own network (LocalAddress.h).
  bool mayReachLocalNetwork = false;
  std::shared_ptr<OpenSockets> sockets = {};  // of the session, which makes it
};

// Errors have the domain "libcurl" and libcurl's own codes (curl/curl.h, CURLcode). A body that the server
// promised longer than it came is an error; over HTTP/1.1, what comes beyond the promised length is not part
// of the answer (RFC 9112, 6.3), over HTTP/2 it is an error as well. Redirects follow Redirection.h, whose
// errors have a domain of their own.
class UrlSession : public NSURLSession {
 public:
  // Costs nothing: the thread starts with the first request.
  explicit UrlSession(TransportOptions options);
  ~UrlSession() override { stop(); }

  void dataTask(NSURLRequest request, Completion completion) override;
  // One at a time: another takes the place of the last. With a server that speaks HTTP/1.1 the first request still has to
  // connect, and finds the name, with TLS 1.2 the session, too. The connection goes after two minutes; libcurl would use it
  // no more. TLS sessions end with the process: the libcurl of neither Debian release was built to hand them out.
  Handle connectAhead(const NSURL& url) override;

  // The machine's way to the network has changed: what is connected by the old one may be dead without anybody having
  // heard of it, so the next request uses none of it. Any thread.
  void networkChanged();

  // Ends all requests and destroys their completions uncalled, also those of requests made later. Returns
  // when the thread has ended; no completion runs any more. Never inside a completion.
  void stop();

 private:
  class Exchange;  // the thread's side
  struct Waiting {
    NSURLRequest request;
    Completion completion;
  };
  struct Orders {
    std::vector<Waiting> requests;
    std::optional<NSURL> ahead;  // to be connected to
  };
  void run();
  std::optional<Orders> takeOrders(Exchange& exchange);
  void wake();
  void letGo();

  const TransportOptions options_;
  std::mutex mutex_;
  std::condition_variable ordered_;
  Orders orders_;
  std::optional<NSURL> unused_;  // connected to ahead, and not asked for anything yet
  bool isStale_ = false;         // no connection made so far is to be used any more
  bool stopping_ = false;
  Exchange* exchange_ = nullptr;  // while there is one to wake
  std::thread thread_;
  std::shared_ptr<UrlSession> self_{this, [](UrlSession*) {}};  // handles have it weakly
};

}  // namespace velto::gtk
