// Registration, the configuration store, the user agent and the error object.
#include "velto/core/SDKVeltoBundle.h"
#include "velto/core/VeltoDataStore.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/network/VeltoTaskManager.h"
#include "velto/platform/ui/WKWebView.h"

#include <thread>

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

class CoreTest : public test::HeadlessTest {
 protected:
  static void setAll(const char* text) {
    VeltoFramework::setEndpoint(text);
    VeltoFramework::setGDPRConsent(text);
    VeltoFramework::setUsPrivacy(text);
    VeltoFramework::acceptPersonalInfoContent(text);
  }
  static std::vector<std::optional<std::string>> all() {
    return {VeltoDataStore::getVeltoEndpoint(), VeltoDataStore::getGDPRConsent(),
            VeltoDataStore::getUsPrivacy()};
  }
};

TEST_F(CoreTest, RegistrationStoresEverythingUnderItsKeyAndWipesWhatWasSetBefore) {
  setAll("early");
  VeltoFramework::addVeltoKey("key-1", true);

  auto entries = platform->defaults()->entries();
  const std::map<std::string, DefaultsValue> expected{
      {"kVeltoClientIdKey", "key-1"}, {"constVeltoTestMode", 1.0}, {"constVeltoPlatform", "native"},
      {"constVeltoEndpoint", ""},     {"kVeltoGDPROptin", 0.0},    {"kVeltoGDPRConsent", ""},
      {"kVeltoCCPAConsent", ""},
  };
  // The install that a first registration tracks waits there too, and its request asked for the user agent.
  EXPECT_EQ(entries.erase("kVeltoTrackIdentifierKey") + entries.erase("kVeltoUserAgentKey"), 2U);
  EXPECT_EQ(entries, expected);

  setAll("set");
  EXPECT_EQ(all(), std::vector<std::optional<std::string>>(3, "set"));
  EXPECT_TRUE(VeltoDataStore::isPersonalInfoContentAccepted());
  EXPECT_TRUE(VeltoDataStore::isTestMode());

  // A later run: nothing starts but by registration.
  platform = headless::Platform::install(platform->defaults());
  VeltoFramework::addVeltoKey("key-2", "wrapper");
  EXPECT_GT(platform->mainQueue().pending(), 0U) << "pending tracks are polled";
  EXPECT_TRUE(VeltoUtilities::isOMSDKActive());
  EXPECT_EQ(VeltoDataStore::getVeltoKey(), "key-2");
  EXPECT_EQ(VeltoDataStore::getVeltoFromNonNative(), "wrapper");
  EXPECT_EQ(all(), std::vector<std::optional<std::string>>(3, ""));
  EXPECT_FALSE(VeltoDataStore::isPersonalInfoContentAccepted());
  EXPECT_FALSE(VeltoDataStore::isTestMode());
}

TEST_F(CoreTest, WithoutAPlatformEveryOperationThrows) {
  headless::Platform::uninstall();
  EXPECT_THROW(registerKey(), std::logic_error);
  EXPECT_THROW(VeltoFramework::setGDPRConsent("x"), std::logic_error)
      << "consent does not vanish without a word";
  EXPECT_THROW(VeltoFramework::version(), std::logic_error);
}

TEST_F(CoreTest, ANullPointerIsAnAbsentText) {
  VeltoFramework::addVeltoKey("k", nullptr);
  EXPECT_EQ(VeltoDataStore::getVeltoFromNonNative(), "native");
  setAll(nullptr);
  EXPECT_EQ(all(), std::vector<std::optional<std::string>>(3));
}

TEST_F(CoreTest, OfManyThreadsThatRegisterOneIsTheFirst) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back([this] { registerKey(); });
  while (!VeltoUtilities::isOMSDKActive()) std::this_thread::yield();
  for (auto& thread : threads) thread.join();
  platform->runUntilIdle();
  EXPECT_EQ(platform->urlSession().requests("trk_install").size(), 1U);
}

TEST_F(CoreTest, EveryChangeIsSynchronisedAndAFailingStoreIsOnlyToldByTheResult) {
  EXPECT_TRUE(VeltoDataStore::storeValue(DefaultsValue("v"), "k"));
  EXPECT_EQ(platform->defaults()->synchronizations(), 1U);
  platform->defaults()->failWrites(true);
  EXPECT_FALSE(VeltoDataStore::storeValue(DefaultsValue("w"), "k"));
  EXPECT_FALSE(VeltoDataStore::storeValue(std::nullopt, "k"));
  EXPECT_FALSE(VeltoDataStore::resetValueForKey("k"));
  VeltoFramework::addVeltoKey("lost");
  EXPECT_EQ(VeltoDataStore::getStringForKey("k"), "v");
  platform->defaults()->failWrites(false);
  EXPECT_TRUE(VeltoDataStore::storeValue(std::nullopt, "k"));
  EXPECT_EQ(VeltoDataStore::getStringForKey("k"), std::nullopt);
}

TEST_F(CoreTest, ADecisionOfThePersonHoldsAlsoWhereTheStoreRefusesItAndIsStoredLater) {
  registerKey();
  VeltoFramework::acceptPersonalInfoContent(true);
  VeltoFramework::setGDPRConsent("given");
  VeltoFramework::setUsPrivacy("1YNN");
  platform->defaults()->failWrites(true);
  VeltoFramework::acceptPersonalInfoContent(false);
  VeltoFramework::setGDPRConsent(std::nullopt);
  const auto isWithdrawn = [] {
    return !VeltoDataStore::isPersonalInfoContentAccepted() && !VeltoDataStore::getGDPRConsent();
  };
  EXPECT_TRUE(isWithdrawn());
  EXPECT_EQ(VeltoDataStore::getUsPrivacy(), "1YNN");
  registerKey();
  EXPECT_EQ(VeltoDataStore::getUsPrivacy(), "") << "which resets the others, too";
  VeltoFramework::setGDPRConsent(std::nullopt);
  platform->defaults()->failWrites(false);
  platform->advance(std::chrono::seconds(10));
  platform = headless::Platform::install(platform->defaults());
  EXPECT_TRUE(isWithdrawn());
  EXPECT_EQ(VeltoDataStore::getUsPrivacy(), "");
}

TEST_F(CoreTest, AnUnregisteredStoreAnswersItsDefaultsAndAValueOfAnotherTypeReadsAsAbsent) {
  EXPECT_EQ(VeltoDataStore::getVeltoKey(), std::nullopt);
  auto& store = platform->standardUserDefaults();
  store.setObject("kVeltoClientIdKey", 7.0);
  store.setObject("constVeltoTestMode", std::string("1"));
  EXPECT_EQ(VeltoDataStore::getVeltoKey(), std::nullopt);
  EXPECT_FALSE(VeltoDataStore::isTestMode());
}

TEST_F(CoreTest, TheFallbackUserAgentNamesTheDeviceTwiceAndIsStored) {
  platform->device().facts.idiom = UIUserInterfaceIdiom::Pad;
  const std::string tablet =
      "Mozilla/5.0 (iPad; CPU iPad OS 16_4 like Mac OS X) AppleWebKit/605.1.15 (KHTML, like Gecko) "
      "Mobile/15E148";
  EXPECT_EQ(VeltoDataStore::getUserAgent(), tablet);
  platform->device().facts.idiom = UIUserInterfaceIdiom::Phone;
  EXPECT_EQ(VeltoDataStore::getUserAgent(), tablet);
  platform->device().facts.systemVersion = "17.0";
  EXPECT_FALSE(VeltoDataStore::hasShownAds()) << "an update of the system is not an engine";
  platform->device().facts.systemVersion = "16.4";
  VeltoDataStore::_updateUserAgent(std::nullopt);
  EXPECT_NE(VeltoDataStore::getUserAgent().find("(iPhone; CPU iPhone OS 16_4 like"), std::string::npos);
}

TEST_F(CoreTest, AWebViewsUserAgentReplacesTheStoredOneOnlyWhenItIsText) {
  const auto view = WKWebView::initWithFrame({}, {});
  auto& page = headless::RecordingWebView::of(*view);
  std::optional<JSON> answer;
  page.answerScripts(
      [&](const std::string& script) { return script == "navigator.userAgent" ? answer : JSON(0); });
  for (const auto& said : {std::optional(JSON("Engine/1")), std::optional<JSON>(), std::optional(JSON(5)),
                           std::optional(JSON())}) {
    const auto before = page.scripts().size();
    answer = said;
    VeltoDataStore::updateUserAgentFromWKWebView(view);
    EXPECT_EQ(page.scripts().size(), before) << "the script must run in a later turn of the main queue";
    platform->runUntilIdle();
    EXPECT_EQ(VeltoDataStore::getUserAgent(), "Engine/1");
  }

  // Who has shown ads will probably show more.
  EXPECT_EQ(platform->views().contentExpected(), 0);
  registerKey();
  EXPECT_EQ(platform->views().contentExpected(), 0) << "in a later turn";
  platform->runUntilIdle();
  EXPECT_EQ(platform->views().contentExpected(), 1);
}

TEST_F(CoreTest, TheConnectionForTheFirstRequestIsMadeWhenAnAdIsProbableAndAKeyIsThere) {
  const auto& servers = platform->urlSession().connectedAhead();
  EXPECT_FALSE(VeltoTaskManager::connectAhead() || !servers.empty());
  registerKey();
  VeltoFramework::setEndpoint("own");
  platform->runUntilIdle();
  EXPECT_TRUE(servers.empty()) << "nobody will show an ad";
  const auto banner =
      VeltoBannerViewController::initWithDelegate({}, VeltoBannerSize320x50, VeltoBannerPositionBottom);
  platform->runUntilIdle();
  ASSERT_EQ(servers.size(), 1u);
  EXPECT_EQ(servers[0].absoluteString(), VeltoURL::veltoURL()->absoluteString());
  EXPECT_TRUE(platform->urlSession().requests("own.").empty());
}

TEST_F(CoreTest, VersionsAndBundles) {
  EXPECT_EQ(VeltoFramework::version(), 4010);
  platform->veltoBundle().information = {{{"CFBundleShortVersionString", "5.1"}}};
  EXPECT_EQ(VeltoFramework::version(), 51);
  platform->veltoBundle().information.reset();
  EXPECT_EQ(VeltoFramework::versionSDK(), "4.0.10");
  EXPECT_EQ(SDKVelto::veltoResourcesBundle(), SDKVelto::veltoBundle());
  const auto resources = std::make_shared<headless::MemoryBundle>();
  platform->mainBundle().bundles["VeltoFrameworkResources.bundle"] = resources;
  EXPECT_EQ(SDKVelto::veltoResourcesBundle(), resources);
}

TEST_F(CoreTest, OrientationMaskComesFromANumberOnly) {
  const std::string name = VeltoNotificationUIInterfaceOrientationMaskLock;
  EXPECT_EQ(VeltoFramework::getUIInterfaceOrientationMaskFrom({name, int64_t{16}}), 16U);
  EXPECT_EQ(VeltoFramework::getUIInterfaceOrientationMaskFrom({name, std::string("16")}), 30U);
  EXPECT_EQ(VeltoFramework::getUIInterfaceOrientationMaskFrom({name, {}}), 30U);
}

TEST(ErrorAdTest, CodesHaveTextsAndCarryTheSystemError) {
  const char* const words[] = {"NO_FILL", "SERVER_ERROR", "DEVELOPER_ERROR", "CANCELLED", "NO_CONNECTION"};
  for (int64_t code = -1; code < 6; ++code) {
    const auto error = VeltoErrorAd::veltoErrorAdWithCode(code);
    const bool known = code >= 0 && code < 5;
    EXPECT_EQ(error.descriptionError().value_or("none"),
              known ? std::string("VeltoError: ") + words[code] : "none");
    EXPECT_EQ(error.domain + std::to_string(error.code),
              "com.velto.VeltoFramework" + std::to_string(error.errorCode));
  }
  EXPECT_EQ(VeltoErrorAd::veltoErrorAdWithCode(4, NSError{"net", 7, "gone"}).error->code, 7);
}

}  // namespace
}  // namespace velto
