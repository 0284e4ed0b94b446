// Shared by the sandbox tests: an HTTPS client that trusts one authority and sends every host name to one
// loopback port.
#pragma once

#include <curl/curl.h>
#include <poll.h>

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
      : ca_(server.caFile()),
        target_(curl_slist_append(nullptr, ("::127.0.0.1:" + std::to_string(server.port())).c_str()),
                &curl_slist_free_all),
        curl_(curl_easy_init(), &curl_easy_cleanup) {}

  // A POST when there is a body. A fresh connection still offers the TLS session of an earlier one.
  Reply send(const std::string& url, const std::string& body = {}, bool freshConnection = false) {
    CURL* curl = reset(url);
    Reply reply;
    curl_slist* headers = curl_slist_append(nullptr, "Content-Type: application/json");
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "agent");
    curl_easy_setopt(curl, CURLOPT_PATH_AS_IS, 1L);
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
    curl_slist_free_all(headers);
    return reply;
  }

  // Sends the text as it stands over a connection of its own, and returns what comes until the server closes it.
  std::string exchange(const std::string& text) {
    CURL* curl = reset("https://ads.velto.example/");
    curl_easy_setopt(curl, CURLOPT_CONNECT_ONLY, 1L);
    if (curl_easy_perform(curl) != CURLE_OK) return {};
    curl_socket_t socket = CURL_SOCKET_BAD;
    curl_easy_getinfo(curl, CURLINFO_ACTIVESOCKET, &socket);
    // Performs a step as soon as the socket is ready; false when it fails.
    const auto when = [&](short ready, const auto& step) {
      CURLcode code = CURLE_OK;
      for (pollfd events{socket, ready, 0}; (code = step()) == CURLE_AGAIN;) poll(&events, 1, -1);
      return code == CURLE_OK;
    };
    std::size_t sent = 0, count = 0;
    while (sent < text.size() &&
           when(POLLOUT, [&] { return curl_easy_send(curl, &text[sent], text.size() - sent, &count); }))
      sent += count;
    std::string answer;
    char bytes[4096];
    while (when(POLLIN, [&] { return curl_easy_recv(curl, bytes, sizeof bytes, &count); }) && count > 0)
      answer.append(bytes, count);
    return answer;
  }

 private:
  CURL* reset(const std::string& url) {
    CURL* curl = curl_.get();
    curl_easy_reset(curl);
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_CAINFO, ca_.c_str());
    curl_easy_setopt(curl, CURLOPT_CONNECT_TO, target_.get());
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    return curl;
  }

  std::string ca_;
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> target_;
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl_;
};

}  // namespace velto::sandbox
