// Checks the query of requests for video ads, item by item. See RequestCheck.h.
#include <regex>

#include "sandbox/RequestCheck.h"
#include "sandbox/Text.h"

namespace velto::sandbox {

namespace {

struct Item {
  const char* name;
  const char* form;  // of the value
  bool required;
};

constexpr const char* kFlag = "[01]";
constexpr const char* kCount = "[0-9]+";
constexpr const char* kNumber = "-?[0-9]+(\\.[0-9]+)?(e[+-][0-9]+)?";
constexpr const char* kSixDecimals = "[0-9]+\\.[0-9]{6}";
constexpr const char* kSome = "[\\s\\S]+";
constexpr const char* kAny = "[\\s\\S]*";

// In the order in which they come.
constexpr Item kItems[] = {
    {"key", kAny, true},
    {"os", kSome, true},
    {"ip", "([0-9.]+|[0-9a-fA-F:.%a-z]*)", true},
    {"source", "app", true},
    {"ab", kAny, true},
    {"vpos", kCount, true},
    {"vw", kNumber, true},
    {"vh", kNumber, true},
    {"vmin", kNumber, true},
    {"vmax", kNumber, true},
    {"vfmt", "([0-3](,[0-3])*)?", true},
    {"an", kAny, true},
    {"url", kAny, true},
    {"aid", kSome, false},
    {"cb", "[0-9]{11}", true},
    {"gdpr_optin", kFlag, true},
    {"gdpr_consent", kAny, false},
    {"us_privacy", kAny, false},
    {"aidl", kFlag, true},
    {"ua", kSome, true},
    {"lat", kNumber, false},
    {"lon", kNumber, false},
    {"vvers", "([23](,[23])*)?", true},
    {"acat", kAny, false},
    {"vpaid", kFlag, true},
    {"vapi", kCount, false},
    {"vplay", kCount, true},
    {"secure", "1", true},
    {"omsdk", kFlag, true},
    {"omidpn", kAny, false},
    {"omidpv", kAny, false},
    {"ov", kSome, true},
    {"coppa", kFlag, true},
    {"mn", kSome, true},
    {"mo", kAny, true},
    {"dw", kSixDecimals, true},
    {"dh", kSixDecimals, true},
    {"dd", kSixDecimals, true},
    {"ln", kAny, true},
    {"ct", "(WIFI|CARRIER)", true},
    {"cc", kSome, true},
    {"son", kAny, false},
    {"non", kAny, false},
    {"soc", "[^-]+-[^-]+", false},
    {"noc", "[^-]+-[^-]+", false},
    {"scc", kSome, false},
    {"ncc", kSome, false},
    {"test", kFlag, true},
};

// Long enough for every honest value; the regular expressions of the standard library recurse.
constexpr std::size_t kLongestValue = 2000;

}  // namespace

std::vector<std::string> checkVastQuery(const RecordedRequest& record) {
  std::vector<std::string> problems;
  const auto expect = [&](bool holds, const std::string& problem) {
    if (!holds) problems.push_back("query " + problem);
  };
  expect(record.method == "GET", "of a " + record.method + " request, expected GET");
  std::vector<std::string> names, expected;
  for (const auto& item : record.query) names.push_back(item.first);
  for (const Item& item : kItems) {
    if (item.required || record.hasQuery(item.name)) expected.push_back(item.name);
    if (!record.hasQuery(item.name)) continue;
    const std::string value = record.queryValue(item.name);
    expect(value.size() <= kLongestValue && std::regex_match(value, std::regex(item.form)),
           std::string(item.name) + ": \"" + value.substr(0, 100) + "\" is not of the form " + item.form);
  }
  expect(names == expected, "items " + join(names, ",") + ", expected " + join(expected, ","));

  const auto together = [&](const char* item, bool wanted, const char* why) {
    expect(record.hasQuery(item) == wanted,
           std::string(item) + (wanted ? ": missing although " : ": present although ") + why);
  };
  const bool vpaid = record.queryValue("vpaid") == "1";
  const bool omsdk = record.queryValue("omsdk") == "1";
  together("vapi", vpaid, vpaid ? "vpaid is 1" : "vpaid is 0");
  for (const char* item : {"omidpn", "omidpv"}) together(item, omsdk, omsdk ? "omsdk is 1" : "omsdk is 0");
  if (record.queryValue("aidl") == "1") together("aid", false, "aidl is 1");
  for (const auto& [first, second] :
       {std::pair("son", "non"), std::pair("soc", "noc"), std::pair("scc", "ncc")}) {
    expect(record.hasQuery(first) == record.hasQuery(second) &&
               record.queryValue(first) == record.queryValue(second),
           std::string(first) + ", " + second + ": expected equal");
  }
  expect(record.hasQuery("lat") == record.hasQuery("lon"), "lat, lon: expected both or none");
  return problems;
}

}  // namespace velto::sandbox
