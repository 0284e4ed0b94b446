// Ad requests as the server gets them: URL, query, headers and body; the device behind the body; redirects.
#include "velto/ads/VeltoAdMediationAdapterPassback.h"
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/core/VeltoDataStore.h"
#include "velto/network/JSONSDKVelto.h"
#include "velto/network/NSURLSDKVelto.h"
#include "velto/network/VeltoAdvertisingIdentifier.h"
#include "velto/network/VeltoDevice.h"
#include "velto/network/VeltoTaskManager.h"
#include "velto/network/VeltoTaskRequest.h"

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

using headless::Answer;

class RequestTest : public test::HeadlessTest {
 protected:
  JSON::Object body(const std::optional<VeltoSettings>& settings = std::nullopt) {
    const auto request = VeltoTaskRequest::requestFor(VeltoAdTypeBanner, VeltoBannerSize320x50, settings);
    if (!request || !request->httpBody) return {};
    return *JSONSDKVelto::JSONDictionary(*request->httpBody)->object();
  }
};

TEST_F(RequestTest, BannerRequestOnTheAdServer) {
  registerKey("pub key");
  const auto request = *VeltoTaskRequest::requestFor(VeltoAdTypeBanner, VeltoBannerSizeSmart, std::nullopt);
  EXPECT_EQ(request.url.query(), "ts=1704067200&k=pub%20key&test=0&at=banner&fsz=Smart%20Banner");
  EXPECT_EQ(request.httpMethod, "POST");
  EXPECT_EQ(request.allHTTPHeaderFields.value("Content-Type"), "application/json");
  EXPECT_EQ(request.allHTTPHeaderFields.value("user-agent"), VeltoDataStore::getUserAgent());
  EXPECT_NE(request.httpBody->find("\n  \"ab\": \"org.example.host\""), std::string::npos);
}

TEST_F(RequestTest, EndpointTestModeMissingKeyAndServerNames) {
  const auto url = [](VeltoAdType type, VeltoBannerSize size) {
    const auto request = VeltoTaskRequest::requestFor(type, size, std::nullopt);
    return request ? request->url.absoluteString() : "none";
  };
  EXPECT_EQ(url(VeltoAdTypeInterstitial, VeltoBannerSizeInterstitial),
            "https://ads.velto.example/sdk/v3/req?ts=1704067200&test=0&at=interstitial");
  VeltoFramework::addVeltoKey("k", true);
  VeltoFramework::setEndpoint("abc");
  EXPECT_EQ(url(VeltoAdTypeBanner, VeltoBannerSize300x250),
            "https://abc.publishers.velto.example/sdk/?ts=1704067200&k=k&test=1&at=banner&fsz=300x250");
  EXPECT_EQ(VeltoURL::veltoSSPURL()->absoluteString(), "https://ads.velto.example/dev/puressp.php");
  const auto built = VeltoURL::serverNames();
  VeltoURL::setServerNames({"localhost:8443", "pub.test", ""});
  EXPECT_EQ(VeltoURL::veltoSSPURL()->absoluteString(), "https://localhost:8443/dev/puressp.php");
  EXPECT_EQ(VeltoURL::veltoURL()->absoluteString(), "https://abc.pub.test/sdk/");
  EXPECT_EQ(VeltoURL::serverNames().tracking, built.tracking);
  VeltoURL::setServerNames({"no host", "x", "y"});
  EXPECT_FALSE(VeltoURL::veltoSSPURL());
  VeltoURL::setServerNames({});
  EXPECT_EQ(VeltoURL::serverNames(), built);
  for (const auto* bad : {"a b", "a/b", "evil.example#", "x@y"}) {
    VeltoFramework::setEndpoint(bad);
    EXPECT_EQ(url(VeltoAdTypeBanner, VeltoBannerSize320x50), "none") << bad;
  }
}

TEST_F(RequestTest, EnumerationsHaveTheirWordsAndMakeNoRequestPastTheirEnd) {
  const auto query = [](uint64_t type, int64_t size) {
    const auto request = VeltoTaskRequest::requestFor(static_cast<VeltoAdType>(type),
                                                      static_cast<VeltoBannerSize>(size), std::nullopt);
    return request ? request->url.query()->substr(std::string("ts=1704067200&test=0&").size()) : "none";
  };
  EXPECT_EQ(query(0, VeltoBannerSizeInterstitial), "at=notvalid");
  EXPECT_EQ(query(3, 0), "none");
  for (const auto& [size, word] : {std::pair(VeltoBannerSize320x50, "320x50"),
                                   {VeltoBannerSize728x90, "728x90"},
                                   {VeltoBannerSize300x250, "300x250"}})
    EXPECT_EQ(query(1, size), std::string("at=banner&fsz=") + word);
  for (const int64_t size : {int64_t{4}, int64_t{VeltoBannerSizeInterstitial}})
    EXPECT_EQ(query(1, size), "none");

  using Words = std::map<int64_t, std::string>;
  const auto check = [&](auto member, const char* key, const Words& words) {
    VeltoSettings settings;
    for (settings.*member = 0; words.contains(settings.*member); ++(settings.*member))
      EXPECT_EQ(body(settings)[key], JSON(words.at(settings.*member)));
    EXPECT_EQ(settings.*member, static_cast<int64_t>(words.size()));
    EXPECT_TRUE(body(settings).empty()) << key;
  };
  check(&VeltoSettings::gender, "ogender",
        {{VeltoGenderMale, "male"}, {VeltoGenderFemale, "female"}, {VeltoGenderOther, "Other"}});
  check(&VeltoSettings::marital, "omarital",
        {{VeltoMaritalSingle, "Single"},
         {VeltoMaritalLivingCommon, "Living Common"},
         {VeltoMaritalMarried, "Married"},
         {VeltoMaritalDivorced, "Divorced"},
         {VeltoMaritalWidowed, "Widowed"}});
}

TEST_F(RequestTest, OtherRequests) {
  const auto download = *VeltoTaskRequest::requestForDownloadData("https://cdn.example/i.png");
  EXPECT_EQ(download.httpMethod, "GET");
  EXPECT_TRUE(download.allHTTPHeaderFields.fields().empty());
  for (const auto& none : {std::optional<std::string>(), std::optional<std::string>("not a url")})
    EXPECT_FALSE(VeltoTaskRequest::requestForSecondaryMRAIDContent(none));
  const auto click = *VeltoTaskRequest::requestForTrackClick("a=b&c\r\n");
  EXPECT_EQ(click.url.absoluteString(), "https://track.velto.example/trk_click.php?id=a%3Db%26c%0D%0A");
  EXPECT_EQ(click.httpMethod, "GET");
  EXPECT_TRUE(click.allHTTPHeaderFields.value("user-agent"));
  EXPECT_EQ(VeltoTaskRequest::requestForTrackInstall("i")->url.path(), "/trk_install.php");
}

TEST_F(RequestTest, BodyOfAFreshRegistration) {
  registerKey();
  auto expected =
      *readJSON(R"({"sdkt": "native", "sdkv": "4.0.10", "mraid": 3, "omsdk": 1, "gadapt": 0, "aidl": "1",
      "dmn": "Apple", "dmo": "iPhone12,1", "dmp": "iPhone", "dos": "ios", "dov": "16.4", "dsw": 390, "dsh": 844,
      "dsd": 3, "dln": "en-US", "dct": "CARRIER", "aln": "en", "ab": "org.example.host", "an": "Host",
      "gz": "-0.0000", "gdpr_opt": false, "gdpr_consent": "", "gdpr_dc": false, "us_privacy": ""})")
           ->object();
  expected["aida"] = VeltoAdvertisingIdentifier::veltoIdentifier();
  expected["dua"] = VeltoDataStore::getUserAgent();
  EXPECT_EQ(body(VeltoSettings{}), expected);
}

TEST_F(RequestTest, BodyWithEverythingKnown) {
  registerKey();
  VeltoFramework::acceptPersonalInfoContent(true);
  VeltoFramework::setGDPRConsent("CO|x");
  platform->telephony().carrier = CTCarrier{"Net", "262", "01"};
  platform->location().lastKnown = CLLocation{52.5, -13.4, 12.5, 1704067000};
  platform->trackingManager().authorizationStatus = 3;
  VeltoAdMediationAdapterRegistry::registerAdapter("VeltoAdMediationAdapterAdMob",
                                                   std::make_shared<VeltoAdMediationAdapterPassbackClass>());
  const VeltoSettings settings{.yearOfBirth = 1990, .age = 34, .mediation = "hub", .keywords = {{"a", "b"}}};
  auto o = body(settings);
  VeltoAdMediationAdapterRegistry::registerAdapter("VeltoAdMediationAdapterAdMob", nullptr);
  const auto expected =
      readJSON(R"({"gadapt": 1, "aid": "6D92078A-8246-4BA4-AE5B-76104861E7DC", "aidl": "", "soc": "01",
      "noc": "01", "son": "Net", "non": "Net", "ncc": "262", "scc": "262", "geo": "52.500000,-13.400000", "ga": 12.5,
      "gf": 1704067000000, "mediator": "hub", "okw": "a,b", "oyob": 1990, "oage": 34, "gdpr_opt": true,
      "gdpr_dc": true, "gdpr_consent": "CO|x"})");
  for (const auto& [key, value] : *expected->object()) EXPECT_EQ(o[key], value) << key;
}

TEST_F(RequestTest, BodyLeavesOutWhatIsNotKnown) {
  platform->telephony().carrier = CTCarrier{"Net", std::nullopt, std::nullopt};
  platform->location().lastKnown = CLLocation{1, 2, -1, 3};
  auto o = body(VeltoSettings{.age = 0, .keywords = std::vector<std::string>()});
  for (const auto* absent : {"soc", "noc", "ncc", "scc", "ga", "aid", "oage", "dctd"})
    EXPECT_FALSE(o.contains(absent)) << absent;
  for (const auto* present : {"son", "non", "geo", "gf", "gz"}) EXPECT_TRUE(o.contains(present)) << present;
  EXPECT_EQ(o["okw"], JSON(""));

  platform->location().servicesEnabled = false;
  o = body();
  EXPECT_FALSE(o.contains("geo") || o.contains("gf"));
}

TEST_F(RequestTest, TimeZoneWordsKeepTheirQuirks) {
  const std::pair<int, const char*> zones[] = {{3600, "+1.0000"},    {19800, "+5.0000"}, {0, "-0.0000"},
                                               {3599, "-0.0000"},    {-1800, "-0.0000"}, {-18000, "--5.0000"},
                                               {-12600, "--3.0000"}, {50400, "+14.0000"}};
  for (const auto& [seconds, word] : zones) {
    platform->localTimeZone().seconds = seconds;
    EXPECT_EQ(body()["gz"], JSON(word)) << seconds;
  }
}

TEST_F(RequestTest, AMissingRequiredValueMakesNoRequest) {
  auto& bundle = platform->mainBundle();
  const auto lacks = [&](auto& value, const char* key) {
    EXPECT_TRUE(body().contains(key));
    const auto kept = std::exchange(value, {});
    EXPECT_TRUE(body().empty()) << key;
    value = kept;
  };
  lacks(platform->currentLocale().languages, "dln");
  lacks(*bundle.information, "an");
  lacks(bundle.information, "an");
  lacks(bundle.identifier, "ab");
}

TEST_F(RequestTest, ABodyThatIsNoTextIsLeftOutAndTheRequestGoesAsGET) {
  platform->device().facts.model = "\xff";
  const auto request = *VeltoTaskRequest::requestFor(VeltoAdTypeBanner, VeltoBannerSize320x50, std::nullopt);
  EXPECT_EQ(request.httpMethod, "GET");
  EXPECT_FALSE(request.httpBody);
  EXPECT_FALSE(request.allHTTPHeaderFields.value("Content-Type"));
}

TEST_F(RequestTest, FingerprintAndAddresses) {
  EXPECT_EQ(VeltoAdvertisingIdentifier::veltoIdentifier(),
            md5Hex("Phone|iPhone12,1|ios|16.4|390.00x844.00|3.00"));
  platform->telephony().carrier = CTCarrier{std::nullopt, "262", std::nullopt};
  EXPECT_EQ(VeltoAdvertisingIdentifier::veltoIdentifier(),
            md5Hex("Phone|iPhone12,1|ios|16.4|262|390.00x844.00|3.00"));
  EXPECT_EQ(VeltoDevice::simOperatorCode(), std::nullopt);
  platform->telephony().carrier->mobileNetworkCode = "07";
  EXPECT_EQ(VeltoDevice::simOperatorCode(), "262-07");
  platform->device().facts.machine.reset();
  EXPECT_EQ(VeltoDevice::model(), "");

  platform->network().interfaces = {
      {"pdp_ip0", true, AddressFamily::IPv4, "10.1.1.1"}, {"en0", false, AddressFamily::IPv4, "10.0.0.9"},
      {"en0", true, AddressFamily::Other, "x"},           {"en0", true, AddressFamily::IPv6, ""},
      {"en0", true, AddressFamily::IPv6, "fe80::1"},      {"en0", true, AddressFamily::IPv6, "fe80::2"}};
  EXPECT_EQ(VeltoDevice::ip(), "fe80::2");
  platform->network().interfaces = {{"pdp_ip0", true, AddressFamily::IPv6, "fe80::3"}};
  EXPECT_EQ(VeltoDevice::ip(), "fe80::3");
  platform->network().interfaces.reset();
  EXPECT_EQ(VeltoDevice::ip(), std::nullopt);
  EXPECT_TRUE(VeltoDevice::_getIPAddresses().empty());
}

TEST_F(RequestTest, TrackingIsLimitedByAuthorisationAndBeforeItByItsInverse) {
  auto& advertising = platform->trackingManager();
  const std::tuple<const char*, int, bool, bool> table[] = {
      {"16.4", 0, false, true},  {"16.4", 1, false, true}, {"16.4", 2, false, true},
      {"16.4", 3, false, false}, {"13.7", 3, true, true},  {"13.7", 0, false, false}};
  for (const auto& [version, status, enabled, limited] : table) {
    platform->device().facts.systemVersion = version;
    advertising.authorizationStatus = status;
    advertising.trackingEnabled = enabled;
    EXPECT_EQ(VeltoAdvertisingIdentifier::isTrackingLimited(), limited);
    EXPECT_EQ(VeltoAdvertisingIdentifier::advertisingIdentifier(),
              limited ? std::nullopt : advertising.identifier);
  }
}

TEST_F(RequestTest, ReachabilityReadsFlagsAndTellsChanges) {
  using R = VeltoReachability;
  const std::pair<uint32_t, int> table[] = {{0, 0},          {262144, 0},         {2 | 262144, 2},
                                            {2, 1},          {2 | 4, 0},          {2 | 4 | 8, 1},
                                            {2 | 4 | 32, 1}, {2 | 4 | 8 | 16, 0}, {2 | 16, 1}};
  for (const auto& [flags, status] : table) EXPECT_EQ(R::networkStatusForFlags(flags), status) << flags;

  int posted = 0;
  const auto reachability = R::reachabilityWithHostName("ads.velto.example");
  const auto observer = platform->notificationCenter().addObserver(
      "kVeltoNetworkReachabilityChangedNotification",
      [&](const NSNotification& n) { posted += n.objectAs<R>() == reachability; });
  platform->network().setWatchable(false);
  EXPECT_FALSE(reachability->startNotifier());
  platform->network().setWatchable(true);
  EXPECT_TRUE(reachability->startNotifier());
  platform->network().setFlags(2 | 4);
  platform->runUntilIdle();
  EXPECT_EQ(posted, 1);
  EXPECT_TRUE(reachability->connectionRequired());
  reachability->stopNotifier();
  platform->network().setFlags(std::nullopt);
  platform->runUntilIdle();
  EXPECT_EQ(posted, 1);
  EXPECT_EQ(reachability->currentReachabilityStatus(), VeltoNetworkNotReachable);

  platform->network().setFlags(2);
  EXPECT_EQ(VeltoDevice::connection(), "CARRIER");
  EXPECT_EQ(VeltoDevice::connectionType(), std::nullopt);
  const auto type = [&](const char* technology) {
    platform->telephony().radioAccessTechnology = std::string("CTRadioAccessTechnology") + technology;
    return VeltoDevice::_connectionTypeFor(VeltoNetworkReachableViaWWAN).value_or("unknown");
  };
  const std::pair<const char*, std::vector<const char*>> generations[] = {
      {"2G", {"GPRS", "Edge", "CDMA1x"}},
      {"3G", {"WCDMA", "HSDPA", "HSUPA", "CDMAEVDORev0", "CDMAEVDORevA", "CDMAEVDORevB", "eHRPD"}},
      {"4G", {"LTE"}},
      {"unknown", {"NR"}}};
  for (const auto& [generation, technologies] : generations)
    for (const auto* technology : technologies) EXPECT_EQ(type(technology), generation) << technology;
  EXPECT_EQ(VeltoDevice::_connectionTypeFor(VeltoNetworkReachableViaWiFi), "WIFI");
  EXPECT_EQ(VeltoDevice::_connectionTypeFor(VeltoNetworkNotReachable), std::nullopt);
}

TEST_F(RequestTest, ImplicitSchemesAndCommands) {
  const auto resolve = [](const char* text) {
    return SDKVelto::URLByResolvingImplicitScheme(*NSURL::URLWithString(text)).absoluteString();
  };
  EXPECT_EQ(resolve("www.shop.example/x"), "https://www.shop.example/x");
  EXPECT_EQ(resolve("//shop.example"), "https://shop.example");
  for (const auto* same : {"unknown:thing", "http://shop.example", "/abc", "?q", "#f", "../abc"})
    EXPECT_EQ(resolve(same), same);
  EXPECT_TRUE(SDKVelto::isAdMRAIDHandler(*NSURL::URLWithString("mraid://close")));
  EXPECT_FALSE(SDKVelto::isAdMRAIDHandler(*NSURL::URLWithString("mraid:close")));
}

TEST_F(RequestTest, RedirectsNeverLeaveHttpsAndKeepCredentialsWithTheirServer) {
  const auto sentOn = [](int code, const char* to) {
    return Answer{.status = code, .headers = {{"Location", to}}};
  };
  const auto errorOf = [&](Answer answer) {
    int64_t code = -1;
    platform->urlSession().enqueue(std::move(answer));
    VeltoTaskManager::executeTaskFor(
        VeltoAdTypeBanner, VeltoBannerSize320x50, std::nullopt,
        [&](const auto& response) { code = response->error ? response->error->errorCode : -1; });
    EXPECT_EQ(code, -1) << "a handler is never called inside the call when a request was made";
    platform->runUntilIdle();
    return code;
  };
  for (const int code : {301, 302, 303, 307, 308})
    EXPECT_EQ(errorOf(sentOn(code, "http://ads.velto.example/")), VeltoErrorNoConnection);
  EXPECT_TRUE(platform->urlSession().requests("http://").empty());
  EXPECT_EQ(errorOf(sentOn(302, "")), VeltoErrorDeveloper);

  auto& session = platform->urlSession();
  NSURLRequest request{*NSURL::URLWithString("http://a.example/x/y?q"), "POST", {}, "body"};
  for (const auto* name : {"Authorization", "Cookie", "Content-Type", "X-Kept"})
    request.allHTTPHeaderFields.set(name, "v");
  const std::tuple<int, const char*, const char*, const char*> table[] = {
      {302, "../z w", "http://a.example/z%20w", "GET Authorization Cookie X-Kept"},
      {303, "//A.example:81/", "http://A.example:81/", "GET X-Kept"},
      {307, "?p", "http://a.example/x/y?p", "POST Authorization Cookie Content-Type X-Kept body"},
      {308, "https://a.example/", "https://a.example/", "POST Content-Type X-Kept body"}};
  for (const auto& [code, location, target, form] : table) {
    session.enqueue(sentOn(code, location));
    session.dataTask(request, nullptr);
    platform->runUntilIdle();
    const auto& last = session.tasks().back()->request();
    std::string got = last.httpMethod;
    for (const auto& [name, value] : last.allHTTPHeaderFields.fields()) got += " " + name;
    EXPECT_EQ(last.url.absoluteString(), target);
    EXPECT_EQ(got + (last.httpBody ? " " + *last.httpBody : ""), form) << location;
  }
}

TEST_F(RequestTest, DownloadsHandOverWhateverBodyCame) {
  platform->urlSession().enqueue(Answer{.status = 404, .body = "missing"});
  std::vector<std::optional<std::string>> bodies;
  const auto note = [&](auto body) { bodies.push_back(body); };
  VeltoTaskManager::executeTaskForDownloadData(std::nullopt, note);
  EXPECT_EQ(bodies.size(), 1U) << "what cannot be asked for is answered at once";
  VeltoTaskManager::executeTaskForDownloadData("https://cdn.example/x", note);
  platform->runUntilIdle();
  EXPECT_EQ(bodies, (std::vector<std::optional<std::string>>{std::nullopt, "missing"}));
}

}  // namespace
}  // namespace velto
