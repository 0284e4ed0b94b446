// The answers that a platform's test server gives in the contract suite, by path.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace velto {

struct ServerAnswer {
  int status = 200;
  std::map<std::string, std::string> headers = {};
  std::string body = {};
  bool cutShort = false;  // more data is promised than comes
  bool never = false;     // no answer for as long as the test lasts
};

// `field` gives the value of one of the request's fields, or an empty text.
inline ServerAnswer serverAnswer(const std::string& method, const std::string& path,
                                 const std::function<std::string(const char*)>& field,
                                 const std::string& body) {
  static std::atomic<int> visits = 0;
  if (path == "/page") return {.headers = {{"X-Content", "html"}}, .body = "hello"};
  if (path == "/empty") return {.status = 204};
  if (path == "/missing") return {.status = 404, .body = "not here"};
  if (path == "/echo") return {.body = method + "|" + field("X-Probe") + "|" + body};
  if (path == "/moved") return {.status = 302, .headers = {{"Location", "/page"}}, .body = "over there"};
  if (path == "/leaves") return {.status = 302, .headers = {{"Location", "ftp://server.example/page"}}};
  if (path == "/kept")
    return {.headers = {{"Set-Cookie", "a=b"}, {"Cache-Control", "max-age=3600"}},
            .body = field("Cookie") + std::to_string(++visits)};
  if (path == "/circle") return {.status = 302, .headers = {{"Location", "/circle"}}};
  if (path == "/cut") return {.body = "half", .cutShort = true};
  if (path == "/never") return {.never = true};
  return {.status = 500};
}

}  // namespace velto
