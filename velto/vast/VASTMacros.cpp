// Names in, values out.
#include "velto/vast/VASTMacros.h"

#include "velto/platform/Clock.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTTime.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <optional>

namespace velto {
namespace {

constexpr size_t longestName = 32;

constexpr std::array<std::string_view, static_cast<size_t>(VASTMacro::VerificationVendors) + 1> macroNames{
    "ADCATEGORIES",
    "ADCOUNT",
    "ADPLAYHEAD",
    "ADSERVINGID",
    "ADTYPE",
    "APIFRAMEWORKS",
    "APPBUNDLE",
    "ASSETURI",
    "BLOCKEDADCATEGORIES",
    "BREAKMAXADLENGTH",
    "BREAKMAXADS",
    "BREAKMAXDURATION",
    "BREAKMINADLENGTH",
    "BREAKMINDURATION",
    "BREAKPOSITION",
    "CACHEBUSTING",
    "CLICKPOS",
    "CLICKTYPE",
    "CLIENTUA",
    "CONTENTID",
    "CONTENTPLAYHEAD",
    "CONTENTURI",
    "DEVICEIP",
    "DEVICEUA",
    "DOMAIN",
    "ERRORCODE",
    "EXTENSIONS",
    "GDPRCONSENT",
    "IFA",
    "IFATYPE",
    "INVENTORYSTATE",
    "LATLONG",
    "LIMITADTRACKING",
    "MEDIAMIME",
    "MEDIAPLAYHEAD",
    "OMIDPARTNER",
    "PAGEURL",
    "PLACEMENTTYPE",
    "PLAYERCAPABILITIES",
    "PLAYERSIZE",
    "PLAYERSTATE",
    "PODSEQUENCE",
    "REASON",
    "REGULATIONS",
    "SERVERSIDE",
    "SERVERUA",
    "TIMESTAMP",
    "TRANSACTIONID",
    "UNIVERSALADID",
    "VASTVERSIONS",
    "VERIFICATIONVENDORS"};

std::optional<VASTMacro> macroOf(std::string_view name) {
  const auto* found = std::find(macroNames.begin(), macroNames.end(), name);
  if (found == macroNames.end()) return std::nullopt;
  return static_cast<VASTMacro>(found - macroNames.begin());
}

// Unreserved characters of RFC 3986 stay.
std::string percentEncoded(std::string_view text) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (isLetter || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '~')
      encoded += c;
    else
      encoded.append({'%', digits[byte >> 4], digits[byte & 15]});
  }
  return encoded;
}

std::string timestamp() {
  auto* platform = Platform::currentOrNull();
  if (!platform) return "-1";
  const double now = platform->clock().secondsSince1970();
  const auto seconds = static_cast<time_t>(std::floor(now));
  std::tm date{};
  if (!gmtime_r(&seconds, &date)) return "-1";
  std::array<char, 64> text{};
  const auto milliseconds = static_cast<int>((now - std::floor(now)) * 1000);
  (void)std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", date.tm_year + 1900,
                      date.tm_mon + 1, date.tm_mday, date.tm_hour, date.tm_min, date.tm_sec, milliseconds);
  return text.data();
}

struct Bracket {
  std::string_view open, close;
};
constexpr std::array<Bracket, 3> brackets{{{"[", "]"}, {"%5B", "%5D"}, {"%5b", "%5d"}}};

}  // namespace

std::string vastCategoryText(const VASTCategory& category) {
  return category.authority.empty() ? category.code : "[" + category.authority + "]" + category.code;
}

VASTMacros& VASTMacros::set(VASTMacro macro, std::string value) {
  values_[macro] = std::move(value);
  return *this;
}

VASTMacros& VASTMacros::set(VASTMacro macro, const std::vector<std::string>& values) {
  return set(macro, join(values, ","));
}

VASTMacros& VASTMacros::set(VASTError code) {
  return set(VASTMacro::ErrorCode, std::to_string(static_cast<int>(code)));
}

VASTMacros& VASTMacros::setTime(VASTMacro macro, double seconds) {
  return set(macro, vastTime(seconds));
}

VASTMacros& VASTMacros::set(const VASTAd& ad) {
  const auto known = [&](VASTMacro macro, const std::vector<std::string>& values) {
    if (!values.empty()) set(macro, values);
  };
  if (!ad.adServingId.empty()) set(VASTMacro::AdServingId, ad.adServingId);
  if (!ad.adType.empty()) set(VASTMacro::AdType, ad.adType);
  if (ad.sequence) set(VASTMacro::PodSequence, std::to_string(*ad.sequence));
  std::vector<std::string> categories, identifiers, vendors;
  for (const auto& category : ad.categories) categories.push_back(vastCategoryText(category));
  for (const auto& verification : ad.verifications)
    if (!verification.vendor.empty()) vendors.push_back(verification.vendor);
  if (ad.linear)
    for (const auto& [registry, value] : ad.linear->universalAdIds)
      identifiers.push_back(join({registry, value}, " "));
  known(VASTMacro::AdCategories, categories);
  known(VASTMacro::UniversalAdId, identifiers);
  known(VASTMacro::VerificationVendors, vendors);
  return *this;
}

std::string VASTMacros::valueOf(VASTMacro macro) const {
  if (const auto found = values_.find(macro); found != values_.end()) return found->second;
  if (macro == VASTMacro::CacheBusting) return randomText("0123456789", 8);
  if (macro == VASTMacro::Timestamp) return timestamp();
  if (macro == VASTMacro::ContentPlayhead && values_.contains(VASTMacro::MediaPlayhead))
    return values_.at(VASTMacro::MediaPlayhead);
  return "-1";
}

std::string VASTMacros::expanded(std::string_view url) const {
  std::string result;
  std::string busting;  // the same wherever it stands in one address
  for (size_t at = 0; at < url.size();) {
    const auto rest = url.substr(at);
    const auto* bracket = std::find_if(brackets.begin(), brackets.end(),
                                       [&](const auto& one) { return rest.starts_with(one.open); });
    if (bracket != brackets.end()) {
      const auto inside = rest.substr(bracket->open.size(), longestName);
      const auto end = inside.find(bracket->close);
      const auto macro = end == std::string_view::npos ? std::nullopt : macroOf(inside.substr(0, end));
      if (macro) {
        const bool isBusting = *macro == VASTMacro::CacheBusting;
        if (isBusting && busting.empty()) busting = valueOf(*macro);
        result += percentEncoded(isBusting ? busting : valueOf(*macro));
        at += bracket->open.size() + end + bracket->close.size();
        continue;
      }
    }
    result += url[at++];
  }
  return result;
}

}  // namespace velto
