// See Fetch.h.
#include "bare/Fetch.h"

namespace velto::bench {

Fetch::~Fetch() {
  curl_easy_cleanup(curl_);
  curl_slist_free_all(connectTo_);
  curl_slist_free_all(headers_);
}

std::string Fetch::markup(const std::string& what) {
  if (!curl_) {
    prepare("https://ads.velto.example/sdk/v3/req?ts=1700000000&k=" + server_.key + "&test=0&" + what);
    headers_ = curl_slist_append(nullptr, "Content-Type: application/json");
    const std::string body = "{\"about\": \"" + std::string(1100, 'x') + "\"}";
    curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, headers_);
    curl_easy_setopt(curl_, CURLOPT_COPYPOSTFIELDS, body.c_str());
  }
  return perform();
}

std::string Fetch::document(const std::string& url) {
  if (!curl_) prepare(url);
  return perform();
}

std::string Fetch::perform() {
  std::string body;
  curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &body);
  if (const CURLcode code = curl_easy_perform(curl_))
    giveUp(std::string("no ad: ") + curl_easy_strerror(code));
  return body;
}

void Fetch::prepare(const std::string& url) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  curl_ = curl_easy_init();
  connectTo_ = curl_slist_append(nullptr, ("::127.0.0.1:" + server_.port).c_str());
  curl_easy_setopt(curl_, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl_, CURLOPT_CAINFO, server_.caFile.c_str());
  curl_easy_setopt(curl_, CURLOPT_CONNECT_TO, connectTo_);
  curl_easy_setopt(curl_, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_2TLS);
  curl_easy_setopt(curl_, CURLOPT_FAILONERROR, 1L);
  curl_easy_setopt(curl_, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, keep);
}

}  // namespace velto::bench
