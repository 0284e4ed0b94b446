// URLs: whatever is accepted is accepted again and keeps its text, and query items survive escaping.
#include "velto/platform/foundation/NSURL.h"
#include "velto/platform/foundation/Text.h"

#include "Check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto text = asText(data, size);
  if (const auto url = velto::NSURL::URLWithString(text)) {
    require(velto::NSURL::URLWithString(url->absoluteString()) == url);
    if (const auto scheme = url->scheme()) require(url->absoluteString().starts_with(*scheme + ":"));
    (void)url->host();
    (void)url->port();
    (void)url->URLByAppendingPathComponent("a").path();
    (void)url->URLByAddingScheme("https");
    (void)url->URLByResolving(text);
  }

  const std::string name(text.substr(0, size / 2));
  const std::string value(text.substr(size / 2));
  const auto base = *velto::NSURL::URLWithString("https://h.example/p?gone#f");
  const auto url =
      velto::NSURL::URLWithString(base.URLByReplacingQueryItems({{name, value}, {"b", ""}}).absoluteString());
  require(url.has_value());
  const auto items = velto::split(*url->query(), "&");
  require(items.size() == 2);
  const auto pair = velto::split(items[0], "=");
  require(pair.size() == 2 && velto::NSURL::unescaped(pair[0]) == name &&
          velto::NSURL::unescaped(pair[1]) == value);
  return 0;
}
