// Shared by the sandbox tests: an HTTPS client that trusts one authority and sends every host name to one
// loopback port.
#pragma once

#include <curl/curl.h>

#include <map>
#include <memory>
#include <string>

#include "../support/Folder.h"
#include "sandbox/Server.h"

namespace velto::sandbox {

using test::TemporaryFolder;

struct Reply {
  CURLcode code = CURLE_OK;
  long status = 0;
  std::string body;
  std::map<std::string, std::string> headers;
};

class Client {
 public:
  explicit Client(const Server& server)
      : ca_(server.caFile()), target_("::127.0.0.1:" + std::to_string(server.port())) {}

  // A POST when there is a body. A fresh connection still offers the TLS session of an earlier one.
  Reply send(const std::string& url, const std::string& body = {}, bool freshConnection = false) {
    CURL* curl = curl_.get();
    curl_easy_reset(curl);
    Reply reply;
    curl_slist* target = curl_slist_append(nullptr, target_.c_str());
    curl_slist* headers = curl_slist_append(nullptr, "Content-Type: application/json");
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_CAINFO, ca_.c_str());
    curl_easy_setopt(curl, CURLOPT_CONNECT_TO, target);
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "agent");
    curl_easy_setopt(curl, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_FRESH_CONNECT, freshConnection ? 1L : 0L);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply.body);
    curl_easy_setopt(
        curl, CURLOPT_WRITEFUNCTION, +[](char* data, size_t one, size_t count, void* text) {
          static_cast<std::string*>(text)->append(data, count);
          return one * count;
        });
    if (!body.empty()) {
      curl_easy_setopt(curl, CURLOPT_COPYPOSTFIELDS, body.c_str());
      curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    }
    reply.code = curl_easy_perform(curl);
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply.status);
    for (curl_header* header = nullptr; (header = curl_easy_nextheader(curl, CURLH_HEADER, 0, header));)
      reply.headers[header->name] = header->value;
    curl_slist_free_all(target);
    curl_slist_free_all(headers);
    return reply;
  }

 private:
  std::string ca_;
  std::string target_;
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl_{curl_easy_init(), &curl_easy_cleanup};
};

}  // namespace velto::sandbox
