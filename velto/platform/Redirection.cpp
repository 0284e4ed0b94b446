// The rules of RFC 9110 as far as a client that keeps secrets follows them.
#include "velto/platform/Redirection.h"

#include "velto/platform/foundation/Text.h"

#include <algorithm>
#include <array>

namespace velto {
namespace {

constexpr int mostRedirects = 20;

bool isRedirectStatus(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

std::string schemeOf(const NSURL& url) {
  return lowercased(url.scheme().value_or(""));
}

bool isOfSameServer(const NSURL& one, const NSURL& other) {
  return schemeOf(one) == schemeOf(other) &&
         lowercased(one.host().value_or("")) == lowercased(other.host().value_or("")) &&
         one.port() == other.port();
}

bool isCredential(const std::string& name) {
  static constexpr std::array<std::string_view, 3> names{"authorization", "cookie", "proxy-authorization"};
  return std::find(names.begin(), names.end(), lowercased(name)) != names.end();
}

Redirection refused(int64_t code, const char* why) {
  return {std::nullopt, NSError{"NSURLErrorDomain", code, why, NSErrorCause::RedirectRefused}};
}

}  // namespace

Redirection redirectionFor(const NSURLRequest& request, int status, const HeaderFields& fields,
                           int redirects) {
  const auto location = isRedirectStatus(status) ? fields.value("Location") : std::nullopt;
  auto target = location && !location->empty() ? request.url.URLByResolving(*location) : std::nullopt;
  if (!target) return {};
  const auto scheme = schemeOf(*target);
  if (scheme != "http" && scheme != "https") return refused(-1002, "a redirect to an unsupported URL");
  if (schemeOf(request.url) == "https" && scheme != "https")
    return refused(-1022, "a redirect from https to http is not followed");
  if (redirects >= mostRedirects) return refused(-1007, "too many HTTP redirects");

  NSURLRequest next = request;
  const bool becomesGet = status <= 303 && request.httpMethod != "GET" && request.httpMethod != "HEAD";
  if (becomesGet) {
    next.httpMethod = "GET";
    next.httpBody.reset();
  }
  const bool leavesServer = !isOfSameServer(request.url, *target);
  next.allHTTPHeaderFields = {};
  for (const auto& [name, value] : request.allHTTPHeaderFields.fields()) {
    if (becomesGet && lowercased(name).starts_with("content-")) continue;
    if (leavesServer && isCredential(name)) continue;
    next.allHTTPHeaderFields.add(name, value);
  }
  next.url = std::move(*target);
  return {std::move(next), std::nullopt};
}

}  // namespace velto
