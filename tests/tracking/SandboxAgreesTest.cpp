// What the sandbox server finds in the library's own ad requests and video ad requests: nothing wrong; and that it would.
#include "velto/network/VeltoTaskRequest.h"

#include "TrackTest.h"
#include "sandbox/RequestCheck.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto {
namespace {

using Problems = std::vector<std::string>;
using SandboxAgreesTest = test::TrackTest;

// Of the request as it arrives.
Problems problemsOf(const NSURLRequest& request) {
  sandbox::RecordedRequest record;
  record.method = request.httpMethod;
  record.host = request.url.host().value();
  record.path = request.url.path();
  record.query = sandbox::decodeQuery("?" + request.url.query().value_or(""));
  record.headers = request.allHTTPHeaderFields.fields();
  record.body = request.httpBody.value_or("");
  record.kind = sandbox::kindOf(record);
  EXPECT_TRUE(record.kind == sandbox::Kind::Ad || record.kind == sandbox::Kind::Vast);
  sandbox::checkRequest(record, sandbox::Names{});
  return record.problems;
}
Problems problemsOf(const std::string& address) {
  return problemsOf(NSURLRequest{NSURL::URLWithString(address).value(), "GET", {}, {}});
}

TEST_F(SandboxAgreesTest, OnAdRequestsWhateverTheCarrier) {
  using Text = std::optional<std::string>;
  for (const auto& [country, network] :
       {std::pair(Text("262"), Text("01")), {Text(), Text("01")}, {Text(), Text()}}) {
    platform->telephony().carrier = CTCarrier{"Net", country, network};
    const auto request = VeltoTaskRequest::requestFor(VeltoAdTypeBanner, VeltoBannerSizeSmart, std::nullopt);
    EXPECT_EQ(problemsOf(request.value()), Problems{});
  }
}

TEST_F(SandboxAgreesTest, OnVideoAdRequests) {
  auto url =
      VeltoVASTURL::VASTURLforHost("ads.example", "key", 1, 640, 360.5, "App & Co", "https://s.example/?a=b");
  EXPECT_EQ(problemsOf(*url->stringURL()), Problems{});
  url->setVPAIDAd(true);
  url->setOMSDKSupported(true);
  url->setVASTVersion({{2, 3}});
  url->setVASTVideoFormat({{9}});
  platform->telephony().carrier = CTCarrier{"Net", "262", "01"};
  platform->location().lastKnown = CLLocation{52.5, -13.4, 1, 1};
  platform->trackingManager().authorizationStatus = 3;
  const auto full = *url->stringURL();
  EXPECT_EQ(problemsOf(full), Problems{});
  EXPECT_EQ(problemsOf(replaceAll(full, "vpaid=1", "vpaid=0")),
            Problems{"query vapi: present although vpaid is 0"});
}

}  // namespace
}  // namespace velto
