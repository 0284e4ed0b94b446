// Asks a server for a video ad, as an application with a player of its own does it: Velto makes the URL,
// libcurl fetches the document, the player gets it. Needs no window.
//
//   vast-request ads.velto.example your-publisher-key
//   vast-request ads.velto.example your-publisher-key 127.0.0.1:8443 ca.pem     # from velto-sandbox
#include <curl/curl.h>
#include <velto/gtk/VeltoGtk.h>
#include <velto/velto.h>

#include <iostream>
#include <memory>
#include <string>

namespace {

size_t append(char* bytes, size_t, size_t size, void* document) {
  static_cast<std::string*>(document)->append(bytes, size);
  return size;
}

// An address and a certificate authority send the request to a test server instead.
CURLcode fetch(const std::string& url, const char* address, const char* authority, std::string& document) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> target(nullptr, curl_slist_free_all);
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_FAILONERROR, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, append);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &document);
  if (address && authority) {
    target.reset(curl_slist_append(nullptr, (std::string("::") + address).c_str()));
    curl_easy_setopt(curl.get(), CURLOPT_CONNECT_TO, target.get());
    curl_easy_setopt(curl.get(), CURLOPT_CAINFO, authority);
    curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
  }
  return curl_easy_perform(curl.get());
}

}  // namespace

int main(int count, char** words) {
  if (count != 3 && count != 5) {
    std::cerr << "usage: vast-request HOST PUBLISHER-KEY [ADDRESS CA-FILE]\n";
    return 2;
  }
  velto::gtk::install({.applicationIdentifier = "org.example.vast"});
  auto request = velto::VeltoVASTURL::VASTURLforHost(words[1], words[2], 1, 640, 360, "Example Player",
                                                     "https://apps.example.com/player");
  request->setMaxDurationVideoSeconds(30);
  request->setVASTVersion({{2, 3}});
  const auto url = request->stringURL();
  velto::gtk::uninstall();
  if (!url) {
    std::cerr << "vast-request: \"" << words[1] << "\" is no host\n";
    return 2;
  }

  std::string document;
  const auto code = fetch(*url, count == 5 ? words[3] : nullptr, count == 5 ? words[4] : nullptr, document);
  if (code != CURLE_OK) {
    std::cerr << "vast-request: " << curl_easy_strerror(code) << '\n';
    return 1;
  }
  std::cout << document << '\n';
}
