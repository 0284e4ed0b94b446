// HTTP for the whole process: one thread, one pool of connections, HTTP/2 where the server speaks it.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/NSURLSession.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velto::gtk {

// What a phone's default configuration fixes, with its values where they apply.
struct TransportOptions {
  // A request fails when no data came or went for this long (at least a second).
  std::chrono::seconds requestTimeout{60};
  int mostConnectionsToOneHost = 6;
  size_t largestBody = size_t{256} << 20;  // bytes, decompressed; a request may ask for less
  size_t mostHeaderFields = 2000;          // of one answer
  std::filesystem::path caFile = {};  // certificate authorities instead of the system's; empty: the system's
  std::vector<HostMapping> hostMap = {};  // the first that matches counts
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

  // Ends all requests and destroys their completions uncalled, also those of requests made later. Returns
  // when the thread has ended; no completion runs any more. Never inside a completion.
  void stop();

 private:
  class Exchange;  // the thread's side
  struct Waiting {
    NSURLRequest request;
    Completion completion;
  };
  void run();
  std::optional<std::vector<Waiting>> takeWaiting(Exchange* exchange);

  const TransportOptions options_;
  std::mutex mutex_;
  std::vector<Waiting> waiting_;
  bool stopping_ = false;
  Exchange* exchange_ = nullptr;  // while there is one to wake
  std::thread thread_;
};

}  // namespace velto::gtk
