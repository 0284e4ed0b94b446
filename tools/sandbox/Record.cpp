// See Record.h.
#include "sandbox/Record.h"

#include "sandbox/Json.h"
#include "sandbox/Text.h"

namespace velto::sandbox {

namespace {

constexpr std::size_t kBodyCap = 65536;

// JSON where it parses, else text, else base64; a body over the cap is cut and never parsed.
void addBody(Json& line, const std::string& body) {
  if (body.empty()) return;
  if (body.size() > kBodyCap) {
    line["bodyBytes"] = body.size();
  } else {
    try {
      line["body"] = parseJson(body);
      return;
    } catch (const Json::parse_error&) {
      // Kept as text or bytes below.
    }
  }
  std::string kept = body.substr(0, kBodyCap);
  // A cut inside a character of several bytes must not turn text into base64.
  while (kept.size() < body.size() && !kept.empty() &&
         (static_cast<unsigned char>(body[kept.size()]) & 0xC0) == 0x80) {
    kept.pop_back();
  }
  if (isUtf8(kept)) {
    line["body"] = kept;
  } else {
    line["bodyBase64"] = base64Encode(kept);
  }
}

Json trackJson(const TrackIdentifier& track) {
  return {{"text", track.text},       {"time", track.time},     {"os", track.os},
          {"version", track.version}, {"device", track.device}, {"arguments", track.arguments}};
}

}  // namespace

std::string RecordedRequest::queryValue(std::string_view name) const {
  for (const auto& [itemName, value] : query) {
    if (itemName == name) return value;
  }
  return {};
}

bool RecordedRequest::hasQuery(std::string_view name) const {
  for (const auto& item : query) {
    if (item.first == name) return true;
  }
  return false;
}

std::string RecordedRequest::header(std::string_view name) const {
  const std::string wanted = lowerCase(name);
  for (const auto& [headerName, value] : headers) {
    if (lowerCase(headerName) == wanted) return value;
  }
  return {};
}

std::string RecordedRequest::toJsonLine() const {
  Json line = {{"event", "request"},       {"t", timeMs},           {"connection", connection},
               {"tlsResumed", tlsResumed}, {"kind", wordFor(kind)}, {"host", host}};
  if (kind != Kind::Tls) {
    line["method"] = method;
    line["path"] = path;
    line["query"] = Json::array();
    for (const auto& [name, value] : query) line["query"].push_back(Json::array({name, value}));
    line["headers"] = Json::object();
    for (const auto& [name, value] : headers) {
      Json& field = line["headers"][name];
      field = field.is_null() ? value : field.get<std::string>() + ", " + value;
    }
    addBody(line, body);
    if (track) line["track"] = trackJson(*track);
    line["status"] = status;
  }
  line["rule"] = rule;
  line["problems"] = problems;
  return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace velto::sandbox
