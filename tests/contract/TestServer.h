// The answers that a platform's test server gives in the contract suite, by path.
#pragma once

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

// `probe` is the value of the request's X-Probe field.
inline ServerAnswer serverAnswer(const std::string& method, const std::string& path, const std::string& probe,
                                 const std::string& body) {
  if (path == "/page") return {.headers = {{"X-Content", "html"}}, .body = "hello"};
  if (path == "/empty") return {.status = 204};
  if (path == "/missing") return {.status = 404, .body = "not here"};
  if (path == "/echo") return {.body = method + "|" + probe + "|" + body};
  if (path == "/moved") return {.status = 302, .headers = {{"Location", "/page"}}};
  if (path == "/circle") return {.status = 302, .headers = {{"Location", "/circle"}}};
  if (path == "/cut") return {.body = "half", .cutShort = true};
  if (path == "/never") return {.never = true};
  return {.status = 500};
}

}  // namespace velto
