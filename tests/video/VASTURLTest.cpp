// URLs of video ad requests, as a server reads them.
#include "velto/core/VeltoDataStore.h"
#include "velto/network/VeltoAdvertisingIdentifier.h"

#include <regex>

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

class VASTURLTest : public test::HeadlessTest {
 protected:
  static VeltoVASTURL made(const std::string& host = "video.example") {
    return VeltoVASTURL::VASTURLforHost(host, "key 1", 7, 640, 360.5, "My & App",
                                        "https://apps.example/?id=1")
        .value();
  }
  // The items of the query in their order, without the random one.
  static std::string query(const VeltoVASTURL& url) {
    return std::regex_replace(url.URL().value().query().value(), std::regex("cb=[0-9]{11}&"), "cb=R&");
  }
};

TEST_F(VASTURLTest, AFreshOneCarriesItsDefaultsAndTheDevice) {
  platform->network().interfaces.reset();
  platform->trackingManager().authorizationStatus = 0;
  const auto url = made();
  ASSERT_TRUE(url.stringURL().value().starts_with("https://video.example?key="));
  EXPECT_EQ(
      query(url),
      "key=key%201&os=ios&ip&source=app&ab=org.example.host&vpos=7&vw=640&vh=360.5&vmin=5&vmax=90&vfmt=1"
      "&an=My%20%26%20App&url=https://apps.example/?id%3D1&cb=R&gdpr_optin=0&aidl=1&ua=Mozilla/"
      "5.0%20(iPhone;%20CPU%20iPhone%20OS"
      "%2016_4%20like%20Mac%20OS%20X)%20AppleWebKit/605.1.15%20(KHTML,%20like%20Gecko)%20Mobile/"
      "15E148&vvers=2&vpaid=0&vplay=1&secure=1&omsdk=0&ov=16.4&coppa=0&mn=Apple&mo=iPhone12,1&dw=390.000000"
      "&dh=844.000000&dd=3.000000&ln=en-US&ct=CARRIER&cc=en_US&test=0");
  EXPECT_NE(url.stringURL(), url.stringURL()) << "each request is another";
}

TEST_F(VASTURLTest, EverythingThatCanBeSaidIsSaidInItsPlace) {
  platform->trackingManager().authorizationStatus = 3;
  platform->location().lastKnown = CLLocation{52.5, -13.4, 1, 1};
  platform->telephony().carrier = CTCarrier{"Net", "262", "01"};
  VeltoFramework::acceptPersonalInfoContent(false);  // not this object's
  auto url = made();
  url.setGDPROptin(true);
  url.setGDPRConsent("CO");
  url.setUsPrivacy("1YNN");
  url.setMinDurationVideoSeconds(0.5);
  url.setMaxDurationVideoSeconds(100000);
  url.setVASTVideoFormat({{3, 0, -1, 4, 2}});
  url.setVASTVersion({{1, 2, 3, 4}});
  url.setAppCategory("IAB1");
  url.setVASTPlaybackMethod(6);
  url.setVPAIDAd(true);
  url.setVPAIDVersion(2);
  url.setOMSDKSupported(true);
  url.setOMSDKIdentifier("partner");
  url.setCOPPA(true);
  url.setTest(true);
  const auto text = query(url);
  const auto identifier = VeltoAdvertisingIdentifier::advertisingIdentifier().value();
  for (const std::string& part :
       {std::string("&ip=192.0.2.10&source"), std::string("&vmin=0.5&vmax=100000&vfmt=3,0,2&an="),
        "&aid=" + identifier + "&cb=R&gdpr_optin=1&gdpr_consent=CO&us_privacy=1YNN&aidl=0&ua=",
        std::string("&lat=52.5&lon=-13.4&vvers=2,3&acat=IAB1&vpaid=1&vapi=2&vplay=6&secure=1"),
        std::string("&omsdk=1&omidpn=partner&omidpv&ov="), std::string("&coppa=1&mn="),
        std::string("&cc=en_US&son=Net&non=Net&soc=262-01&noc=262-01&scc=262&ncc=262&test=1")})
    EXPECT_NE(text.find(part), std::string::npos) << part << "\nin " << text;
  url.setVASTVideoFormat({{5}});  // lists may become empty, and nothing changes none
  url.setVASTVideoFormat(std::nullopt);
  EXPECT_NE(query(url).find("&vfmt=&"), std::string::npos);
}

TEST_F(VASTURLTest, TheMandatoryIsAskedForAtCreationAndAtTheEnd) {
  const auto create = [](int missing) {
    std::optional<std::string> texts[] = {"", "", "", ""};
    std::optional<double> sides[] = {0, 0};
    if (missing < 4) texts[missing].reset();
    if (missing >= 4 && missing < 6) sides[missing - 4].reset();
    return VeltoVASTURL::VASTURLforHost(texts[0], texts[1], 0, sides[0], sides[1], texts[2], texts[3]);
  };
  for (int missing = 0; missing <= 6; ++missing)
    EXPECT_EQ(create(missing).has_value(), missing == 6) << missing;
  auto url = made();
  url.width.reset();
  EXPECT_FALSE(url.URL() || url.stringURL());
}

TEST_F(VASTURLTest, HostsAndKeys) {
  EXPECT_TRUE(made("localhost:8443").stringURL()->starts_with("https://localhost:8443?key="));
  EXPECT_TRUE(made("video.example/vast?old#f").stringURL()->starts_with("https://video.example/vast?key="));
  for (const auto* host : {"no host", "video.example:port"}) EXPECT_FALSE(made(host).URL()) << host;
  made("").URL();  // a URL without host or none, but no fault
  for (const auto& [key, type] : {std::pair("my-CtV-key", 1U), {"key", 0U}})
    EXPECT_EQ(VeltoVASTURL::VASTURLforHost("h", key, 0, 1, 1, "n", "s")->urlType, type);
}

}  // namespace
}  // namespace velto
