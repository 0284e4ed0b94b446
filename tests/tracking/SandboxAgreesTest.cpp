// What the sandbox server finds in the library's own ad requests, tracks and video ad requests: nothing
// wrong; and that it would.
#include "velto/network/VeltoTaskRequest.h"

#include "TrackTest.h"
#include "sandbox/RequestCheck.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto {
namespace {

using sandbox::Kind;
using Problems = std::vector<std::string>;

// The request as it arrives.
sandbox::RecordedRequest arrived(const NSURLRequest& request) {
  sandbox::RecordedRequest record;
  record.method = request.httpMethod;
  record.host = request.url.host().value();
  record.path = request.url.path();
  record.query = sandbox::decodeQuery("?" + request.url.query().value());
  record.headers = request.allHTTPHeaderFields.fields();
  record.body = request.httpBody.value_or("");
  record.kind = sandbox::kindOf(record);
  sandbox::checkRequest(record, sandbox::Names{});
  return record;
}

class SandboxAgreesTest : public test::TrackTest {};

TEST_F(SandboxAgreesTest, OnTracks) {
  platform->device().facts.name = "A|B:C \xf0\x9f\x93\xb1";
  registerKey("pub:key");
  click();
  const auto requests = platform->urlSession().requests("trk_");
  ASSERT_EQ(requests.size(), 2U);
  const auto install = arrived(requests[0]);
  EXPECT_EQ(install.problems, Problems{});
  EXPECT_EQ(install.track.value().arguments, "pub:key");
  const auto clicked = arrived(requests[1]);
  EXPECT_EQ(clicked.problems, Problems{});
  EXPECT_EQ(clicked.track.value().arguments, "b1:p1:o1");
  EXPECT_EQ(clicked.track.value().device.at(0), "A BC \xf0\x9f\x93\xb1");
  EXPECT_EQ(clicked.track.value().device.at(8), "1704000000");
}

TEST_F(SandboxAgreesTest, OnAdRequestsWhateverTheCarrier) {
  using Text = std::optional<std::string>;
  for (const auto& [country, network] :
       {std::pair(Text("262"), Text("01")), {Text(), Text("01")}, {Text(), Text()}}) {
    platform->telephony().carrier = CTCarrier{"Net", country, network};
    const auto request = VeltoTaskRequest::requestFor(VeltoAdTypeBanner, VeltoBannerSizeSmart, std::nullopt);
    EXPECT_EQ(arrived(request.value()).problems, Problems{});
  }
}

TEST_F(SandboxAgreesTest, OnVideoAdRequests) {
  const auto get = [](const NSURL& url) { return arrived({url, "GET", {}, {}}); };
  auto url = VeltoVASTURL::VASTURLforHost("ads.velto.example", "key", 1, 640, 360.5, "App & Co",
                                          "https://store.example/?a=b")
                 .value();
  EXPECT_EQ(get(*url.URL()).kind, Kind::Vast);
  EXPECT_EQ(get(*url.URL()).problems, Problems{});

  url.setVPAIDAd(true);
  url.setOMSDKSupported(true);
  url.setGDPRConsent("CO");
  url.setUsPrivacy("1---");
  url.setAppCategory("IAB1");
  url.setVASTVersion({{2, 3}});
  url.setVASTVideoFormat({{9}});
  platform->telephony().carrier = CTCarrier{"Net", "262", "01"};
  platform->location().lastKnown = CLLocation{52.5, -13.4, 1, 1};
  platform->trackingManager().authorizationStatus = 3;
  EXPECT_EQ(get(*url.URL()).problems, Problems{});

  const auto problems = [&](std::string_view from, std::string_view to) {
    return get(*NSURL::URLWithString(replaceAll(*url.stringURL(), from, to))).problems;
  };
  ASSERT_EQ(problems("&vmin=5", "").size(), 1U);
  EXPECT_TRUE(problems("&vmin=5", "")[0].starts_with("query items key,os,ip,source,ab,vpos,vw,vh,vmax,"));
  EXPECT_EQ(problems("vpaid=1", "vpaid=0"), Problems{"query vapi: present although vpaid is 0"});
  EXPECT_EQ(problems("aidl=0", "aidl=1"), Problems{"query aid: present although aidl is 1"});
  EXPECT_EQ(problems("&non=Net", "&non=Other"), Problems{"query son, non: expected equal"});
  EXPECT_EQ(problems("vvers=2,3", "vvers=2,4"),
            Problems{"query vvers: \"2,4\" is not of the form ([23](,[23])*)?"});
}

}  // namespace
}  // namespace velto
