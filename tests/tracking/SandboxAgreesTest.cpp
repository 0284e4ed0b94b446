// What the sandbox server finds in the library's own video ad requests: nothing wrong; and that it would.
#include "TrackTest.h"
#include "sandbox/RequestCheck.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto {
namespace {

using Problems = std::vector<std::string>;
using SandboxAgreesTest = test::TrackTest;

// The request of an address as it arrives.
Problems problemsOf(const std::string& address) {
  const auto url = NSURL::URLWithString(address).value();
  sandbox::RecordedRequest record;
  record.method = "GET";
  record.host = url.host().value();
  record.path = url.path();
  record.query = sandbox::decodeQuery("?" + url.query().value());
  record.kind = sandbox::kindOf(record);
  EXPECT_EQ(record.kind, sandbox::Kind::Vast);
  sandbox::checkRequest(record, sandbox::Names{});
  return record.problems;
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
