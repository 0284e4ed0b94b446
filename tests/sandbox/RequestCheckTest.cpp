// What the server finds wrong with requests: nothing in a good one, and each fault by its name.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sandbox/RequestCheck.h"
#include "sandbox/Server.h"

namespace velto::sandbox {
namespace {

using Json = nlohmann::json;
using Problems = std::vector<std::string>;

Json goodBody() {
  return Json::parse(R"({"sdkt": "native", "sdkv": "4.0.10", "mraid": 3.0, "omsdk": 1, "gadapt": 0,
    "aid": "6D92078A-8246-4BA4-AE5B-76104861E7DC", "aida": "0123456789abcdef0123456789abcdef", "aidl": "",
    "dmn": "Maker", "dmo": "Phone", "dmp": "Phone", "dos": "OS", "dov": "16.1", "dsw": 390, "dsh": 844.5, "dsd": 3,
    "dua": "agent", "dln": "en-GB", "dct": "CARRIER", "soc": "10", "noc": "10", "son": "Net", "non": "Net",
    "ncc": "222", "scc": "222", "aln": "en", "ab": "org.example.app", "an": "App",
    "geo": "45.464200,-9.190000", "ga": 10, "gf": 1700000000000, "gz": "+1.0000", "mediator": "M", "okw": "a,b",
    "oyob": 1980, "oage": 43, "ogender": "Other", "omarital": "Living Common", "gdpr_opt": true,
    "gdpr_consent": "", "gdpr_dc": true, "us_privacy": ""})");
}

RecordedRequest request(Kind kind, std::string host, std::string path) {
  RecordedRequest record;
  record.kind = kind;
  record.host = std::move(host);
  record.path = std::move(path);
  record.method = kind == Kind::Ad || kind == Kind::Mediation ? "POST" : "GET";
  record.headers = {{"Content-Type", "application/json"}, {"User-Agent", "agent"}};
  return record;
}

Problems problemsOf(RecordedRequest record) {
  checkRequest(record, Names{});
  return record.problems;
}

void expectBeginnings(const Problems& problems, const Problems& expected) {
  ASSERT_EQ(problems.size(), expected.size()) << Json(problems).dump(2);
  for (std::size_t i = 0; i < problems.size(); ++i)
    EXPECT_TRUE(problems[i].starts_with(expected[i])) << problems[i] << "\nexpected " << expected[i];
}

TEST(RequestCheck, NamesEachFaultOfABody) {
  EXPECT_EQ(checkAdBody(goodBody().dump(), "agent"), Problems{});

  const struct {
    const char* patch;  // merged into the good body; null removes a key
    Problems expected;  // the beginnings of the problems
  } cases[] = {
      {R"({"dmn": null, "extra": 1})", {"body dmn: missing", "body extra: unknown key"}},
      {R"({"dsw": "390", "gdpr_opt": 1, "gadapt": 1.0})",
       {"body gadapt: is 1.0, expected an integer", "body dsw: is \"390\"",
        "body gdpr_opt: is 1, expected a boolean", "body gdpr_opt, gdpr_dc: expected equal"}},
      {R"({"aidl": "1"})", {"body aid: present although"}},
      {R"({"gz": "--12.0000"})", {}},
      {R"({"ncc": null, "scc": null})", {}},
      {R"({"gz": "+0.0000"})", {"body gz: is"}},
      {R"({"gz": "+15.0000"})", {"body gz: is"}},
      {R"({"soc": "222-10", "non": "Other"})",
       {"body soc: is \"222-10\"", "body soc, noc: expected equal", "body son, non: expected equal"}},
      {R"({"geo": null, "ga": 1})", {"body geo, gf: expected both", "body ga: present without"}},
      {R"({"dct": "wifi", "dua": "other"})", {"body dua: is not", "body dct: is"}},
      {R"({"oyob": 0, "ogender": "Male"})", {"body oyob: is 0", "body ogender: is \"Male\""}},
  };
  for (const auto& fault : cases) {
    Json body = goodBody();
    body.merge_patch(Json::parse(fault.patch));
    SCOPED_TRACE(fault.patch);
    expectBeginnings(checkAdBody(body.dump(), "agent"), fault.expected);
  }
}

TEST(RequestCheck, RefusesBodiesThatAreNoObject) {
  EXPECT_EQ(checkAdBody("", "agent"), Problems{"body: not JSON"});
  EXPECT_EQ(checkAdBody("[]", "agent"), Problems{"body: not a JSON object"});
  EXPECT_EQ(checkAdBody(std::string(1'000'000, '['), "agent"), Problems{"body: not JSON"});
  const std::string good = goodBody().dump();
  EXPECT_EQ(checkAdBody("{\"an\":\"twice\"," + good.substr(1), "agent"),
            Problems{"body an: given more than once"});
}

TEST(RequestCheck, ChecksQueryMethodHostAndHeadersOfAdRequests) {
  RecordedRequest good = request(Kind::Ad, "ads.velto.example", "/sdk/v3/req");
  good.query = {
      {"ts", "1700000000"}, {"k", "demo"}, {"test", "0"}, {"at", "banner"}, {"fsz", "Smart Banner"}};
  good.body = goodBody().dump();
  EXPECT_EQ(problemsOf(good), Problems{});

  RecordedRequest bad = good;
  bad.host = "publishers.velto.example";
  bad.query = {{"k", "demo"}, {"ts", "17.5"}, {"test", "yes"}, {"at", "interstitial"}, {"fsz", "320x50"}};
  bad.headers = {{"Content-Type", "application/json; charset=utf-8"}};
  expectBeginnings(
      problemsOf(bad),
      {"host \"publishers.velto.example\" is not the ad server \"ads.velto.example\"",
       "query: items k,ts,test,at,fsz, expected ts,k,test,at", "query ts: \"17.5\"", "query test: \"yes\"",
       "header Content-Type: ", "body dua: is not the header user-agent"});
}

TEST(RequestCheck, ReadsTrackIdentifiers) {
  const std::string device = "My phone|OS|16.1|P1|Phone|en_GB|en-GB||1699990000|1700000000";
  const std::string text = "3:1700000000:3:OS:4.0.10:" + device + ":b1:p1:o1";
  const std::string identifier = wrapTrackText("Zz9", wrapTrackText("a0B", text));

  RecordedRequest click = request(Kind::Click, "track.velto.example", "/trk_click.php");
  click.query = {{"id", identifier}};
  EXPECT_EQ(problemsOf(click), Problems{});

  std::string joined = identifier;
  joined.erase(joined.find("\r\n"), 2);
  const std::pair<std::string, std::string> cases[] = {
      {"", "track identifier, outer wrapping: does not begin"},
      {"a-0" + identifier.substr(3), "track identifier, outer wrapping: does not begin"},
      {joined, "track identifier, outer wrapping: a line that is not the last has 128"},
      {wrapTrackText("abc", text), "track identifier, inner wrapping: "},
      {wrapTrackText("abc", wrapTrackText("abc", "3:17:3:OS")), "track identifier: 4 fields"},
      {wrapTrackText("abc", wrapTrackText("abc", "3:17:3:OS:4:D:b:p:o")),
       "track identifier: the device has 1"},
  };
  for (const auto& [id, expected] : cases) {
    click.query = {{"id", id}};
    expectBeginnings(problemsOf(click), {expected});
  }
}

}  // namespace
}  // namespace velto::sandbox
