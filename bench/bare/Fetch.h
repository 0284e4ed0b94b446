// How the bare programs ask for ads: libcurl, to the same server over the same HTTPS (private authority,
// connection sent to loopback), with a body of the usual size; the connection is kept for later requests.
#pragma once

#include <curl/curl.h>

#include <string>
#include <utility>

#include "LoadProgram.h"

namespace velto::bench {

class Fetch {
 public:
  explicit Fetch(Server server) : server_(std::move(server)) {}
  Fetch(const Fetch&) = delete;
  Fetch& operator=(const Fetch&) = delete;
  ~Fetch();

  // The markup. Waits for it. `what` is the end of the query: "at=banner&fsz=320x50".
  std::string markup(const std::string& what);
  // What is at an address of the server's, by GET.
  std::string document(const std::string& url);

 private:
  void prepare(const std::string& url);
  std::string perform();
  static size_t keep(char* bytes, size_t, size_t size, std::string* body) {
    body->append(bytes, size);
    return size;
  }

  const Server server_;
  CURL* curl_ = nullptr;
  curl_slist* connectTo_ = nullptr;
  curl_slist* headers_ = nullptr;
};

}  // namespace velto::bench
