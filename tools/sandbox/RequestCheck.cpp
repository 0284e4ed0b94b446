// Checks of method, host, query and headers; the ad body has its own file. See RequestCheck.h.
#include "sandbox/RequestCheck.h"

#include <algorithm>
#include <tuple>

#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto::sandbox {

namespace {

constexpr const char* kAdPath = "/sdk/v3/req";
constexpr const char* kEndpointAdPath = "/sdk/";

class Checker {
 public:
  Checker(RecordedRequest& record, const Names& names) : record_(record), names_(names) {}

  void checkAd() {
    if (record_.path == kAdPath) {
      expectHost(names_.adServer, "the ad server");
    } else {
      expect(!endpointOf(record_.host, names_).empty(),
             "host " + quoted(record_.host) + " is not a sub-domain of " + quoted(names_.publishers));
    }
    checkAdQuery();
    expectJsonPost();
    if (record_.method != "POST") return;
    for (std::string& problem : checkAdBody(record_.body, record_.header("user-agent"))) {
      record_.problems.push_back(std::move(problem));
    }
  }

  void checkMediation() {
    expectHost(names_.adServer, "the ad server");
    expect(record_.query.empty(), "query: expected none");
    expectJsonPost();
    expectUserAgent();
    expect(!record_.body.empty(), "body: empty");
  }

  void checkTrack() {
    expectHost(names_.tracking, "the tracking host");
    expect(record_.method == "GET", "method " + record_.method + ", expected GET");
    expectUserAgent();
    expect(record_.body.empty(), "body: expected none");
    if (record_.query.size() != 1 || record_.query[0].first != "id") {
      expect(false, "query: items " + itemNames() + ", expected one item id");
    }
    if (!record_.hasQuery("id")) return;
    record_.track = readTrackIdentifier(record_.queryValue("id"), record_.problems);
    if (!record_.track || record_.track->device.empty()) return;  // already reported
    const std::size_t parts = split(record_.track->arguments, ":").size();
    if (record_.kind == Kind::Click) {
      expect(parts >= 3, "track identifier: click arguments " + quoted(record_.track->arguments) +
                             ", expected banner, publisher and order separated by \":\"");
    } else {
      expect(!record_.track->arguments.empty(), "track identifier: the install's key is empty");
    }
  }

  void checkVast() {
    for (std::string& problem : checkVastQuery(record_)) record_.problems.push_back(std::move(problem));
  }

  void checkOther() { expect(false, "no request of the library: " + record_.method + " " + record_.path); }

 private:
  static std::string quoted(const std::string& text) { return '"' + text + '"'; }

  void expect(bool holds, const std::string& problem) {
    if (!holds) record_.problems.push_back(problem);
  }

  void expectHost(const std::string& host, const char* role) {
    expect(record_.host == host, "host " + quoted(record_.host) + " is not " + role + " " + quoted(host));
  }

  void expectUserAgent() {
    expect(!record_.header("user-agent").empty(), "header user-agent: missing or empty");
  }

  void expectJsonPost() {
    expect(record_.method == "POST", "method " + record_.method + ", expected POST");
    const std::string type = record_.header("Content-Type");
    expect(type == "application/json",
           "header Content-Type: " + quoted(type) + ", expected \"application/json\"");
  }

  std::string itemNames() const {
    std::vector<std::string> names;
    for (const auto& item : record_.query) names.push_back(item.first);
    return names.empty() ? "(none)" : join(names, ",");
  }

  void expectWord(const char* item, const std::vector<std::string>& words) {
    const std::string value = record_.queryValue(item);
    if (!record_.hasQuery(item)) return;  // its absence is reported with the order of the items
    expect(std::find(words.begin(), words.end(), value) != words.end(),
           std::string("query ") + item + ": " + quoted(value) + ", expected one of " + join(words, ", "));
  }

  // The items come in a fixed order; the key is left out while none is registered, the size unless it is a
  // banner's.
  void checkAdQuery() {
    const bool banner = record_.queryValue("at") == "banner";
    std::string expected = record_.hasQuery("k") ? "ts,k,test,at" : "ts,test,at";
    if (banner) expected += ",fsz";
    expect(itemNames() == expected, "query: items " + itemNames() + ", expected " + expected);
    if (record_.hasQuery("ts")) {
      expect(isDigits(record_.queryValue("ts")),
             "query ts: " + quoted(record_.queryValue("ts")) + ", expected whole seconds since 1970");
    }
    if (record_.hasQuery("k")) expect(!record_.queryValue("k").empty(), "query k: empty");
    expectWord("test", {"0", "1"});
    expectWord("at", {"notvalid", "banner", "interstitial"});
    if (banner) expectWord("fsz", {"Smart Banner", "320x50", "728x90", "300x250"});
  }

  RecordedRequest& record_;
  const Names& names_;
};

}  // namespace

Kind kindOf(const RecordedRequest& record) {
  const auto& [method, path] = std::tie(record.method, record.path);
  if (path == kAdPath || path == kEndpointAdPath) return Kind::Ad;
  if (path == "/dev/puressp.php") return Kind::Mediation;
  if (path == "/trk_install.php") return Kind::Install;
  if (path == "/trk_click.php") return Kind::Click;
  if (method != "GET" && method != "HEAD") return Kind::Other;
  // Requests for video ads go to whatever place the application names; no download asks for a VAST version.
  return record.hasQuery("vvers") ? Kind::Vast : Kind::Download;
}

std::string endpointOf(const std::string& host, const Names& names) {
  const std::string suffix = "." + names.publishers;
  return host.ends_with(suffix) ? host.substr(0, host.size() - suffix.size()) : std::string();
}

void checkRequest(RecordedRequest& record, const Names& names) {
  Checker checker(record, names);
  switch (record.kind) {
    case Kind::Ad:
      return checker.checkAd();
    case Kind::Mediation:
      return checker.checkMediation();
    case Kind::Install:
    case Kind::Click:
      return checker.checkTrack();
    case Kind::Vast:
      return checker.checkVast();
    case Kind::Other:
      return checker.checkOther();
    case Kind::Download:
    case Kind::Tls:
      return;
  }
}

}  // namespace velto::sandbox
