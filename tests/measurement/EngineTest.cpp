// The rules of the engine's classes, each with its error, and the injection of the service script.
#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/measurement/OMIDVeltoAdEvents.h"
#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoMediaEvents.h"
#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoScriptInjector.h"
#include "velto/measurement/OMIDVeltoVASTProperties.h"
#include "velto/measurement/OMSDK.h"
#include "velto/platform/ui/WKWebView.h"

#include "../support/HeadlessTest.h"

namespace velto::test {
namespace {

using Session = std::shared_ptr<OMIDVeltoAdSession>;
using Configuration = std::shared_ptr<const OMIDVeltoAdSessionConfiguration>;
using Context = std::shared_ptr<const OMIDVeltoAdSessionContext>;

class EngineTest : public HeadlessTest {
 protected:
  void SetUp() override { ASSERT_TRUE(OMIDVeltoSDK::sharedInstance()->activate()); }

  static std::shared_ptr<const OMIDVeltoPartner> partner() {
    return OMIDVeltoPartner::initWithName("P", "1");
  }
  static std::shared_ptr<const OMIDVeltoVerificationScriptResource> resource() {
    return OMIDVeltoVerificationScriptResource::initWithURL(*NSURL::URLWithString("https://v.example/"), "v",
                                                            " ");
  }
  static Configuration configuration(int creative = 4, int impression = 4, int owner = 2, int media = 2,
                                     OMIDVeltoErrorResult error = nullptr) {
    return OMIDVeltoAdSessionConfiguration::initWithCreativeType(
        static_cast<OMIDVeltoCreativeType>(creative), static_cast<OMIDVeltoImpressionType>(impression),
        static_cast<OMIDVeltoOwner>(owner), static_cast<OMIDVeltoOwner>(media), false, error);
  }
  static Context nativeContext(OMIDVeltoErrorResult error = nullptr) {
    return OMIDVeltoAdSessionContext::initWithPartner(partner(), "script()", {resource()}, std::nullopt, "",
                                                      error);
  }
  static Session session(const Configuration& configuration, const Context& context = nativeContext()) {
    return OMIDVeltoAdSession::initWithConfiguration(configuration, context, nullptr);
  }
  // Whether the call fails, with that code.
  static void fails(OMIDVeltoErrorCode code, const std::function<bool(OMIDVeltoErrorResult)>& call,
                    int line) {
    std::optional<NSError> error;
    EXPECT_FALSE(call(&error)) << "line " << line;
    EXPECT_EQ(error ? error->code : 0, code) << "line " << line;
    EXPECT_EQ(error ? error->domain : "", OMIDVeltoErrorDomain) << "line " << line;
    EXPECT_FALSE(call(nullptr)) << "an error nobody asks for, line " << line;
  }
};

#define FAILS(code, expression)                                                                         \
  fails(                                                                                                \
      code, [&]([[maybe_unused]] OMIDVeltoErrorResult error) { return static_cast<bool>(expression); }, \
      __LINE__)

TEST_F(EngineTest, ValuesThatAreOutOfRangeMakeNoSession) {
  EXPECT_FALSE(OMIDVeltoPartner::initWithName(" \n", "1"));
  EXPECT_FALSE(OMIDVeltoPartner::initWithName("P", ""));
  FAILS(OMIDVeltoErrorInvalidArgument, configuration(1, 4, 2, 3, error));
  FAILS(OMIDVeltoErrorInvalidArgument, configuration(2, 1, 2, 3, error));
  FAILS(OMIDVeltoErrorInvalidArgument, configuration(2, 4, 3, 3, error));
  FAILS(OMIDVeltoErrorInvalidArgument, configuration(6, 4, 1, 3, error));
  FAILS(OMIDVeltoErrorInvalidArgument, configuration(2, 0, 1, 3, error));
  FAILS(OMIDVeltoErrorInvalidArgument, configuration(2, 4, 1, 4, error));
  EXPECT_TRUE(configuration(1, 1, 1, 1));

  using C = OMIDVeltoAdSessionContext;
  const auto page = WKWebView::initWithFrame({}, {});
  FAILS(OMIDVeltoErrorInvalidArgument, C::initWithPartner(nullptr, page, {}, "", error));
  FAILS(OMIDVeltoErrorInvalidArgument, C::initWithPartner(partner(), nullptr, {}, "", error));
  FAILS(OMIDVeltoErrorInvalidArgument, C::initWithPartner(partner(), "script", {}, {}, "", error));
  FAILS(OMIDVeltoErrorInvalidArgument, C::initWithPartner(partner(), "script", {nullptr}, {}, "", error));
  FAILS(OMIDVeltoErrorInvalidArgument,
        C::initWithPartner(partner(), std::nullopt, {resource()}, {}, "", error));
  std::string reference;
  for (int i = 0; i < 256; ++i) reference += "ß";
  EXPECT_TRUE(C::initWithPartner(partner(), page, {}, reference, nullptr))
      << "characters are counted, not bytes";
  FAILS(OMIDVeltoErrorInvalidArgument, C::initWithPartner(partner(), page, {}, reference + "x", error));
  FAILS(OMIDVeltoErrorInvalidArgument,
        OMIDVeltoAdSession::initWithConfiguration(nullptr, nativeContext(), error));
  FAILS(OMIDVeltoErrorInvalidArgument,
        OMIDVeltoAdSession::initWithConfiguration(configuration(), nullptr, error));
}

TEST_F(EngineTest, NothingWorksBeforeTheActivation) {
  const auto known = partner();
  const auto script = resource();
  const auto settings = configuration();
  const auto context = nativeContext();
  platform = headless::Platform::install();
  FAILS(OMIDVeltoErrorNotActive, configuration(4, 4, 2, 2, error));
  FAILS(OMIDVeltoErrorNotActive,
        OMIDVeltoAdSessionContext::initWithPartner(known, "script", {script}, {}, "", error));
  FAILS(OMIDVeltoErrorNotActive, OMIDVeltoAdSession::initWithConfiguration(settings, context, error));
  FAILS(OMIDVeltoErrorNotActive, OMIDVeltoScriptInjector::injectScriptContent("x", "<p>", error));
  EXPECT_FALSE(partner() || resource());
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";
  EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("<p>ad"), "<p>ad");
  EXPECT_EQ(VeltoAdManager::getOMSKJs(), std::nullopt);
  registerKey();
  EXPECT_TRUE(VeltoUtilities::isOMSDKActive());
  EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("<p>ad"), "<script>service()</script><p>ad");
}

TEST_F(EngineTest, AdEventsComeOnceAndFromTheirOwner) {
  const auto native = session(configuration());
  const auto events = OMIDVeltoAdEvents::initWithAdSession(native, nullptr);
  ASSERT_TRUE(events);
  FAILS(OMIDVeltoErrorInvalidState, OMIDVeltoAdEvents::initWithAdSession(native, error));
  FAILS(OMIDVeltoErrorInvalidArgument, OMIDVeltoAdEvents::initWithAdSession(nullptr, error));
  EXPECT_TRUE(events->loadedWithError(nullptr));
  FAILS(OMIDVeltoErrorInvalidState, events->loadedWithError(error));
  FAILS(OMIDVeltoErrorInvalidState,
        events->loadedWithVastProperties(
            OMIDVeltoVASTProperties::initWithAutoPlay(true, OMIDVeltoPositionStandalone), error));
  EXPECT_FALSE(native->isStarted());
  EXPECT_TRUE(events->impressionOccurredWithError(nullptr));
  EXPECT_TRUE(native->isStarted()) << "the impression starts it";
  FAILS(OMIDVeltoErrorInvalidState, events->impressionOccurredWithError(error));

  const auto page = session(configuration(2, 4, 1, 3));
  const auto pageEvents = OMIDVeltoAdEvents::initWithAdSession(page, nullptr);
  FAILS(OMIDVeltoErrorWrongOwner, pageEvents->loadedWithError(error));
  FAILS(OMIDVeltoErrorWrongOwner, pageEvents->impressionOccurredWithError(error));

  const auto ended = session(configuration());
  const auto endedEvents = OMIDVeltoAdEvents::initWithAdSession(ended, nullptr);
  ended->finish();
  FAILS(OMIDVeltoErrorInvalidState, endedEvents->loadedWithError(error));
  FAILS(OMIDVeltoErrorInvalidState, endedEvents->impressionOccurredWithError(error));
  ended->start();
  EXPECT_FALSE(ended->isStarted());
  EXPECT_TRUE(ended->isFinished());
}

TEST_F(EngineTest, MediaEventsNeedARunningSessionAndAVolumeInRange) {
  const auto video = session(configuration());
  const auto events = OMIDVeltoMediaEvents::initWithAdSession(video, nullptr);
  ASSERT_TRUE(events);
  FAILS(OMIDVeltoErrorInvalidState, OMIDVeltoMediaEvents::initWithAdSession(video, error));
  FAILS(OMIDVeltoErrorWrongOwner,
        OMIDVeltoMediaEvents::initWithAdSession(session(configuration(4, 4, 2, 1)), error));
  FAILS(OMIDVeltoErrorInvalidState, events->startWithDuration(1, 1, error));
  FAILS(OMIDVeltoErrorInvalidState, events->midpoint(error));
  video->start();
  EXPECT_TRUE(events->startWithDuration(1, 1));
  EXPECT_TRUE(events->volumeChangeTo(0));
  for (const float volume : {-0.01F, 1.01F, std::numeric_limits<float>::quiet_NaN()}) {
    FAILS(OMIDVeltoErrorInvalidArgument, events->startWithDuration(1, volume, error));
    FAILS(OMIDVeltoErrorInvalidArgument, events->volumeChangeTo(volume, error));
  }
  FAILS(OMIDVeltoErrorInvalidArgument,
        events->playerStateChangeTo(static_cast<OMIDVeltoPlayerState>(9), error));
  EXPECT_TRUE(events->adUserInteractionWithType(OMIDVeltoInteractionTypeClick));
  const auto late = session(configuration());
  late->start();
  FAILS(OMIDVeltoErrorInvalidState, OMIDVeltoMediaEvents::initWithAdSession(late, error));
  video->finish();
  FAILS(OMIDVeltoErrorInvalidState, events->complete(error));
}

TEST_F(EngineTest, AFriendlyViewHasAPlainReasonAndIsRegisteredOnce) {
  const auto ad = session(configuration());
  const auto view = UIView::make();
  const auto add = [&](const std::optional<std::string>& reason, OMIDVeltoErrorResult error) {
    return ad->addFriendlyObstruction(view, OMIDVeltoFriendlyObstructionCloseAd, reason, error);
  };
  FAILS(OMIDVeltoErrorInvalidArgument, add("not-plain", error));
  FAILS(OMIDVeltoErrorInvalidArgument, add(std::string(51, 'a'), error));
  FAILS(OMIDVeltoErrorInvalidArgument,
        ad->addFriendlyObstruction(nullptr, OMIDVeltoFriendlyObstructionOther, std::nullopt, error));
  EXPECT_TRUE(add(std::string(49, 'a') + " ", nullptr));
  FAILS(OMIDVeltoErrorInvalidState, add(std::nullopt, error));
  ad->removeFriendlyObstruction(view);
  EXPECT_TRUE(add(std::nullopt, nullptr));
  ad->removeAllFriendlyObstructions();
  ad->finish();
  FAILS(OMIDVeltoErrorInvalidState, add(std::nullopt, error));
}

TEST_F(EngineTest, TheServiceScriptStandsBeforeAnyOther) {
  // Where it goes is marked with a bar.
  for (const std::string marked : {
           "<!DOCTYPE html><html lang=\"a>b\"><head>|<script>first()</script></head>",
           "<HTML>\n<HEAD data-x='>' >|<title>t</title>",
           "\xEF\xBB\xBF <!-- <head> --> <html><!----><!--><head>|<meta>",
           "|<script>first()</script><html><head></head>",
           "<html>|<script>first()</script><head>",
           "<html>|<header>no head</header>",
           "<!doctype html>|<p>a <head> in a text",
           "|text",
           "|<!-- without end <head>",
           "<?xml version='1.0'?><html><head/>|<p>",
           "<html>|<body onload=\"go('<head>')\">",
           "|<head without end",
       }) {
    const auto bar = marked.find('|');
    const std::string html = marked.substr(0, bar) + marked.substr(bar + 1);
    EXPECT_EQ(OMIDVeltoScriptInjector::injectScriptContent("s()", html, nullptr),
              marked.substr(0, bar) + "<script>s()</script>" + marked.substr(bar + 1));
  }
  FAILS(OMIDVeltoErrorInvalidArgument, OMIDVeltoScriptInjector::injectScriptContent("s()", " \n", error));
  FAILS(OMIDVeltoErrorInvalidArgument, OMIDVeltoScriptInjector::injectScriptContent("", "<p>", error));
  EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("<p>"), "<p>") << "the library's resources have no script here";
}

TEST_F(EngineTest, TheScriptIsReadUntilItIsThere) {
  EXPECT_EQ(VeltoAdManager::getOMSKJs(), std::nullopt);
  auto& files = platform->veltoBundle().files;
  files["omsdk-v1.js"] = "\xFF";
  EXPECT_EQ(VeltoAdManager::getOMSKJs(), std::nullopt) << "no text";
  files["omsdk-v1.js"] = "first()";
  EXPECT_EQ(VeltoAdManager::getOMSKJs(), "first()");
  files["omsdk-v1.js"] = "second()";
  EXPECT_EQ(VeltoAdManager::getOMSKJs(), "first()");
  EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("  "), "  ");
}

}  // namespace
}  // namespace velto::test
