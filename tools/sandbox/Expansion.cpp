// See Expansion.h.
#include "sandbox/Expansion.h"

#include <cstdio>
#include <cstdlib>
#include <map>

#include "sandbox/Json.h"

namespace velto::sandbox {

namespace {

// What comes from the request must neither break a header nor become markup.
std::string harmless(std::string text) {
  for (char& c : text) {
    const bool good = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                      c == '.' || c == '-' || c == '_';
    if (!good) c = '_';
  }
  return text;
}

int screenLength(const Json& body, const char* key, int fallback) {
  const auto value = body.is_object() ? body.find(key) : body.end();
  if (value == body.end() || !value->is_number()) return fallback;
  const double length = value->get<double>();
  return length >= 1 && length <= 100000 ? static_cast<int>(length) : fallback;
}

int queryLength(const RecordedRequest& request, const char* item, int fallback) {
  const double length = std::strtod(request.queryValue(item).c_str(), nullptr);
  return length >= 1 && length <= 100000 ? static_cast<int>(length) : fallback;
}

// The size that the ad should have: the banner's, or the screen's for smart banners (in width) and
// interstitials.
std::pair<int, int> sizeFor(const RecordedRequest& request) {
  int width = 320;
  int height = 50;
  if (request.kind == Kind::Vast) return {queryLength(request, "vw", 640), queryLength(request, "vh", 360)};
  if (request.kind != Kind::Ad) return {width, height};
  if (std::sscanf(request.queryValue("fsz").c_str(), "%5dx%5d", &width, &height) == 2) return {width, height};
  Json body;
  try {
    body = parseJson(request.body);
  } catch (const Json::parse_error&) {
    // The fallbacks below stand in for a screen.
  }
  width = screenLength(body, "dsw", 320);
  if (request.queryValue("at") == "banner") return {width, width >= 728 ? 90 : 50};
  return {width, screenLength(body, "dsh", 480)};
}

void replaceAll(std::string& text, const std::map<std::string, std::string>& values) {
  std::string expanded;
  std::size_t start = 0;
  for (std::size_t open = text.find("{{"); open != std::string::npos; open = text.find("{{", start)) {
    const std::size_t close = text.find("}}", open);
    if (close == std::string::npos) break;
    const auto value = values.find(text.substr(open + 2, close - open - 2));
    // An unknown name stays as it is; looking goes on behind its first brace.
    const std::size_t end = value == values.end() ? open + 1 : close + 2;
    expanded += text.substr(start, open - start) + (value == values.end() ? "{" : value->second);
    start = end;
  }
  text = expanded + text.substr(start);
}

// The host with the port that the request names, if any: so that addresses in the answer lead here again.
std::string placeOf(const RecordedRequest& request) {
  const std::string asked = request.header("Host");
  const auto colon = asked.rfind(':');
  const std::string port = colon == std::string::npos ? "" : asked.substr(colon + 1);
  const bool isPort = !port.empty() && port.find_first_not_of("0123456789") == std::string::npos;
  return harmless(request.host) + (isPort ? ":" + port : "");
}

}  // namespace

void expand(ChosenAnswer& chosen, const RecordedRequest& request) {
  const auto [width, height] = sizeFor(request);
  const std::map<std::string, std::string> values = {
      {"width", std::to_string(width)},
      {"height", std::to_string(height)},
      {"key", harmless(request.queryValue(request.kind == Kind::Vast ? "key" : "k"))},
      {"type", harmless(request.queryValue("at"))},
      {"host", placeOf(request)},
      {"count", std::to_string(chosen.turn)},
  };
  replaceAll(chosen.answer.body, values);
  for (auto& header : chosen.answer.headers) replaceAll(header.second, values);
}

}  // namespace velto::sandbox
