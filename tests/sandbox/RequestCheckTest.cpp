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
      {R"({"mraid": 2, "omsdk": 0, "gadapt": 2})",
       {"body mraid: is 2", "body omsdk: is 0", "body gadapt: is 2"}},
      {R"({"aidl": "0"})", {"body aidl: is \"0\""}},
      {R"({"aidl": "1"})", {"body aid: present although"}},
      {R"({"soc": "222-10", "non": "Other"})",
       {"body soc: is \"222-10\"", "body soc, noc: expected equal", "body son, non: expected equal"}},
      {R"({"geo": "45.4642,9.19"})", {"body geo: is"}},
      {R"({"geo": null, "ga": -1})",
       {"body ga: is -1", "body geo, gf: expected both", "body ga: present without"}},
      {R"({"dct": "wifi", "dctd": "5G", "dua": "other"})",
       {"body dua: is not", "body dct: is", "body dctd: is"}},
      {R"({"oyob": 0, "oage": -23, "ogender": "Male", "omarital": "single"})",
       {"body oyob: is 0", "body oage: is -23", "body ogender: is \"Male\"", "body omarital: is \"single\""}},
      {R"({"aida": "0123456789ABCDEF0123456789ABCDEF", "aid": "x"})", {"body aid: is", "body aida: is"}},
  };
  for (const auto& fault : cases) {
    Json body = goodBody();
    body.merge_patch(Json::parse(fault.patch));
    const Problems problems = checkAdBody(body.dump(), "agent");
    ASSERT_EQ(problems.size(), fault.expected.size()) << fault.patch << Json(problems).dump(2);
    for (std::size_t i = 0; i < problems.size(); ++i) {
      EXPECT_TRUE(problems[i].starts_with(fault.expected[i]))
          << problems[i] << "\nexpected " << fault.expected[i];
    }
  }
  const std::vector<std::string> wrong{"+0.0000", "-5.0000", "+5.3000", "+1.00", "+15.0000", "--0.0000", ""};
  for (const auto& zones :
       {std::vector<std::string>{"+5.0000", "-0.0000", "--5.0000", "+14.0000", "--12.0000"}, wrong})
    for (const auto& zone : zones) {
      Json body = goodBody();
      body["gz"] = zone;
      EXPECT_EQ(checkAdBody(body.dump(), "agent").size(), zones == wrong ? 1U : 0U) << zone;
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

  RecordedRequest keyless = good;
  keyless.query = {{"ts", "1700000000"}, {"test", "1"}, {"at", "interstitial"}};
  keyless.host = "abc.publishers.velto.example";
  keyless.path = "/sdk/";
  EXPECT_EQ(problemsOf(keyless), Problems{});

  RecordedRequest bad = good;
  bad.host = "publishers.velto.example";
  bad.query = {{"k", "demo"}, {"ts", "17.5"}, {"test", "yes"}, {"at", "interstitial"}, {"fsz", "320x50"}};
  bad.headers = {{"Content-Type", "application/json; charset=utf-8"}};
  const Problems problems = problemsOf(bad);
  ASSERT_EQ(problems.size(), 6U) << Json(problems).dump(2);
  EXPECT_EQ(problems[0], "host \"publishers.velto.example\" is not the ad server \"ads.velto.example\"");
  EXPECT_EQ(problems[1], "query: items k,ts,test,at,fsz, expected ts,k,test,at");
  EXPECT_TRUE(problems[2].starts_with("query ts: \"17.5\""));
  EXPECT_TRUE(problems[3].starts_with("query test: \"yes\""));
  EXPECT_TRUE(problems[4].starts_with("header Content-Type: "));
  EXPECT_TRUE(problems[5].starts_with("body dua: is not the header user-agent"));

  good.method = "GET";
  good.query[4].second = "320X50";
  EXPECT_EQ(problemsOf(good).size(), 2U);
}

TEST(RequestCheck, ReadsTrackIdentifiers) {
  const std::string device = "My phone|OS|16.1|P1|Phone|en_GB|en-GB||1699990000|1700000000";
  const std::string text = "3:1700000000:3:OS:4.0.10:" + device + ":b1:p1:o1";
  const std::string identifier = wrapTrackText("Zz9", wrapTrackText("a0B", text));

  RecordedRequest click = request(Kind::Click, "track.velto.example", "/trk_click.php");
  click.query = {{"id", identifier}};
  checkRequest(click, Names{});
  EXPECT_EQ(click.problems, Problems{});
  ASSERT_TRUE(click.track);
  EXPECT_EQ(click.track->text, text);
  EXPECT_EQ(click.track->arguments, "b1:p1:o1");
  EXPECT_EQ(click.track->device.size(), 10U);
  EXPECT_NE(identifier.find("\r\n"), std::string::npos);

  const auto problemsWith = [&](const std::string& id) {
    click.query = {{"id", id}};
    return problemsOf(click);
  };
  std::string joined = identifier;
  joined.erase(joined.find("\r\n"), 2);
  const std::pair<std::string, std::string> cases[] = {
      {"", "track identifier, outer wrapping: does not begin"},
      {"a-0" + identifier.substr(3), "track identifier, outer wrapping: does not begin"},
      {joined, "track identifier, outer wrapping: a line that is not the last has 128"},
      {identifier + "\r\n", "track identifier, outer wrapping: a line that is not the last has 52"},
      {wrapTrackText("abc", text), "track identifier, inner wrapping: "},
      {wrapTrackText("abc", wrapTrackText("abc", "3:17:3:OS")), "track identifier: 4 fields"},
      {wrapTrackText("abc", wrapTrackText("abc", "3:17:3:OS:4:D:b:p:o")),
       "track identifier: the device has 1"},
      {wrapTrackText("abc", wrapTrackText("abc", "3:1700000000:3:OS:4:" + device + ":key")),
       "track identifier: click arguments"},
  };
  for (const auto& [id, expected] : cases) {
    const Problems problems = problemsWith(id);
    ASSERT_EQ(problems.size(), 1U) << expected << Json(problems).dump(2);
    EXPECT_TRUE(problems[0].starts_with(expected)) << problems[0];
  }
}

}  // namespace
}  // namespace velto::sandbox
