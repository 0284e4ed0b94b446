// What the sandbox server finds in the library's own video ad requests: nothing wrong; and that it would.

#include "TrackTest.h"
#include "sandbox/RequestCheck.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto {
namespace {

using sandbox::Kind;
using Problems = std::vector<std::string>;

// The request of an address as it arrives.
sandbox::RecordedRequest arrived(const NSURL& url) {
  sandbox::RecordedRequest record;
  record.method = "GET";
  record.host = url.host().value();
  record.path = url.path();
  record.query = sandbox::decodeQuery("?" + url.query().value());
  record.kind = sandbox::kindOf(record);
  sandbox::checkRequest(record, sandbox::Names{});
  return record;
}

class SandboxAgreesTest : public test::TrackTest {};

TEST_F(SandboxAgreesTest, OnVideoAdRequests) {
  auto url = VeltoVASTURL::VASTURLforHost("ads.velto.example", "key", 1, 640, 360.5, "App & Co",
                                          "https://store.example/?a=b")
                 .value();
  EXPECT_EQ(arrived(*url.URL()).kind, Kind::Vast);
  EXPECT_EQ(arrived(*url.URL()).problems, Problems{});

  url.setVPAIDAd(true);
  url.setOMSDKSupported(true);
  url.setVASTVersion({{2, 3}});
  url.setVASTVideoFormat({{9}});
  platform->telephony().carrier = CTCarrier{"Net", "262", "01"};
  platform->location().lastKnown = CLLocation{52.5, -13.4, 1, 1};
  platform->trackingManager().authorizationStatus = 3;
  EXPECT_EQ(arrived(*url.URL()).problems, Problems{});

  const auto wrong = replaceAll(*url.stringURL(), "vpaid=1", "vpaid=0");
  EXPECT_EQ(arrived(*NSURL::URLWithString(wrong)).problems,
            Problems{"query vapi: present although vpaid is 0"});
}

}  // namespace
}  // namespace velto
