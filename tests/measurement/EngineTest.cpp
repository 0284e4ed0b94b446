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

#include <array>

#include "../support/HeadlessTest.h"

namespace velto::test {
namespace {

constexpr auto invalid = OMIDVeltoErrorInvalidArgument;
constexpr auto wrongState = OMIDVeltoErrorInvalidState;
constexpr auto wrongOwner = OMIDVeltoErrorWrongOwner;
constexpr auto notActive = OMIDVeltoErrorNotActive;
using Context = OMIDVeltoAdSessionContext;
using Injector = OMIDVeltoScriptInjector;
using AdEvents = OMIDVeltoAdEvents;
using MediaEvents = OMIDVeltoMediaEvents;

class EngineTest : public HeadlessTest {
 protected:
  void SetUp() override { ASSERT_TRUE(OMIDVeltoSDK::sharedInstance()->activate()); }

  static auto partner() { return OMIDVeltoPartner::initWithName("P", "1"); }
  static auto resource() {
    return OMIDVeltoVerificationScriptResource::initWithURL(*NSURL::URLWithString("https://v.example/"), "v",
                                                            " ");
  }
  static std::shared_ptr<const OMIDVeltoAdSessionConfiguration> configuration(
      int creative = 4, int impression = 4, int owner = 2, int media = 2,
      OMIDVeltoErrorResult error = nullptr) {
    return OMIDVeltoAdSessionConfiguration::initWithCreativeType(
        static_cast<OMIDVeltoCreativeType>(creative), static_cast<OMIDVeltoImpressionType>(impression),
        static_cast<OMIDVeltoOwner>(owner), static_cast<OMIDVeltoOwner>(media), false, error);
  }
  static auto context() {
    return Context::initWithPartner(partner(), "script()", {resource()}, std::nullopt, "", nullptr);
  }
  static auto session(int owner = 2, int media = 2) {
    return OMIDVeltoAdSession::initWithConfiguration(configuration(4, 4, owner, media), context(), nullptr);
  }
  // Whether the call fails with that code, also where nobody asks for it.
  static void fails(OMIDVeltoErrorCode code, const std::function<bool(OMIDVeltoErrorResult)>& call,
                    int line) {
    SCOPED_TRACE(line);
    std::optional<NSError> error;
    EXPECT_FALSE(call(&error));
    EXPECT_EQ(error ? error->code : 0, code);
    EXPECT_EQ(error ? error->domain : "", OMIDVeltoErrorDomain);
    EXPECT_FALSE(call(nullptr));
  }
};

#define FAILS(code, expression)                                                                         \
  fails(                                                                                                \
      code, [&]([[maybe_unused]] OMIDVeltoErrorResult error) { return static_cast<bool>(expression); }, \
      __LINE__)

TEST_F(EngineTest, ValuesThatAreOutOfRangeMakeNoSession) {
  EXPECT_FALSE(OMIDVeltoPartner::initWithName(" \n", "1"));
  EXPECT_FALSE(OMIDVeltoPartner::initWithName("P", ""));
  for (const auto& kinds :
       {std::array{1, 4, 2, 3}, {2, 1, 2, 3}, {2, 4, 3, 3}, {6, 4, 1, 3}, {2, 0, 1, 3}, {2, 4, 1, 4}})
    FAILS(invalid, configuration(kinds[0], kinds[1], kinds[2], kinds[3], error));
  EXPECT_TRUE(configuration(1, 1, 1, 1));

  const auto page = WKWebView::initWithFrame({}, {});
  FAILS(invalid, Context::initWithPartner(nullptr, page, {}, "", error));
  FAILS(invalid, Context::initWithPartner(partner(), nullptr, {}, "", error));
  FAILS(invalid, Context::initWithPartner(partner(), "script", {}, {}, "", error));
  FAILS(invalid, Context::initWithPartner(partner(), "script", {nullptr}, {}, "", error));
  FAILS(invalid, Context::initWithPartner(partner(), std::nullopt, {resource()}, {}, "", error));
  std::string reference;
  for (int i = 0; i < 256; ++i) reference += "ß";
  EXPECT_TRUE(Context::initWithPartner(partner(), page, {}, reference, nullptr)) << "counted in characters";
  FAILS(invalid, Context::initWithPartner(partner(), page, {}, reference + "x", error));
  FAILS(invalid, OMIDVeltoAdSession::initWithConfiguration(nullptr, context(), error));
  FAILS(invalid, OMIDVeltoAdSession::initWithConfiguration(configuration(), nullptr, error));
}

TEST_F(EngineTest, CodesHaveTheNamesThatScriptsKnow) {
  const auto names = [](auto... codes) { return ((std::string(OMIDVeltoName(codes)) + " ") + ...); };
  EXPECT_EQ(names(OMIDVeltoCreativeTypeDefinedByJavaScript, OMIDVeltoCreativeTypeHTMLDisplay,
                  OMIDVeltoCreativeTypeNativeDisplay, OMIDVeltoCreativeTypeVideo, OMIDVeltoCreativeTypeAudio),
            "definedByJavaScript htmlDisplay nativeDisplay video audio ");
  EXPECT_EQ(names(OMIDVeltoImpressionTypeDefinedByJavaScript, OMIDVeltoImpressionTypeUnspecified,
                  OMIDVeltoImpressionTypeLoaded, OMIDVeltoImpressionTypeBeginToRender,
                  OMIDVeltoImpressionTypeOnePixel, OMIDVeltoImpressionTypeViewable,
                  OMIDVeltoImpressionTypeAudible, OMIDVeltoImpressionTypeOther),
            "definedByJavaScript unspecified loaded beginToRender onePixel viewable audible other ");
  EXPECT_EQ(names(OMIDVeltoOwnerJavaScript, OMIDVeltoOwnerNative, OMIDVeltoOwnerNone),
            "javascript native none ");
  EXPECT_EQ(names(OMIDVeltoPositionPreroll, OMIDVeltoPositionMidroll, OMIDVeltoPositionPostroll,
                  OMIDVeltoPositionStandalone),
            "preroll midroll postroll standalone ");
  EXPECT_EQ(names(OMIDVeltoPlayerStateMinimized, OMIDVeltoPlayerStateCollapsed, OMIDVeltoPlayerStateNormal,
                  OMIDVeltoPlayerStateExpanded, OMIDVeltoPlayerStateFullscreen),
            "minimized collapsed normal expanded fullscreen ");
  EXPECT_EQ(names(OMIDVeltoInteractionTypeClick, OMIDVeltoInteractionTypeAcceptInvitation),
            "click invitationAccept ");
}

TEST_F(EngineTest, NothingWorksBeforeTheActivation) {
  const auto known = partner();
  const auto script = resource();
  const auto settings = configuration();
  const auto ready = context();
  platform = headless::Platform::install();
  FAILS(notActive, configuration(4, 4, 2, 2, error));
  FAILS(notActive, Context::initWithPartner(known, "script", {script}, {}, "", error));
  FAILS(notActive, OMIDVeltoAdSession::initWithConfiguration(settings, ready, error));
  FAILS(notActive, Injector::injectScriptContent("x", "<p>", error));
  EXPECT_FALSE(partner() || resource());
  auto& files = platform->veltoBundle().files;
  files["omsdk-v1.js"] = "service()";
  EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("<p>ad"), "<p>ad");
  EXPECT_EQ(VeltoAdManager::getOMSKJs(), std::nullopt);
  registerKey();
  EXPECT_TRUE(VeltoUtilities::isOMSDKActive());
  files["omsdk-v1.js"] = "\xFF";
  EXPECT_EQ(VeltoAdManager::getOMSKJs(), std::nullopt) << "no text: it is read again until there is one";
  for (const auto* text : {"service()", "second()"}) {
    files["omsdk-v1.js"] = text;
    EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("<p>ad"), "<script>service()</script><p>ad");
  }
  EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("  "), "  ");
}

TEST_F(EngineTest, AdEventsComeOnceAndFromTheirOwner) {
  const auto native = session();
  const auto events = AdEvents::initWithAdSession(native, nullptr);
  ASSERT_TRUE(events);
  FAILS(wrongState, AdEvents::initWithAdSession(native, error));
  FAILS(invalid, AdEvents::initWithAdSession(nullptr, error));
  EXPECT_TRUE(events->loadedWithError(nullptr));
  FAILS(wrongState, events->loadedWithError(error));
  const auto video = OMIDVeltoVASTProperties::initWithAutoPlay(true, OMIDVeltoPositionStandalone);
  FAILS(wrongState, events->loadedWithVastProperties(video, error));
  EXPECT_FALSE(native->isStarted());
  EXPECT_TRUE(events->impressionOccurredWithError(nullptr));
  EXPECT_TRUE(native->isStarted()) << "the impression starts it";
  FAILS(wrongState, events->impressionOccurredWithError(error));

  for (const auto& [owner, code] : {std::pair(1, wrongOwner), {2, wrongState}}) {
    const auto other = session(owner, owner);
    const auto others = AdEvents::initWithAdSession(other, nullptr);
    if (code == wrongState) other->finish();
    FAILS(code, others->loadedWithError(error));
    FAILS(code, others->impressionOccurredWithError(error));
    other->finish();
    other->start();
    EXPECT_FALSE(other->isStarted());
    EXPECT_TRUE(other->isFinished());
  }
}

TEST_F(EngineTest, MediaEventsNeedARunningSessionAndAVolumeInRange) {
  const auto video = session();
  const auto events = MediaEvents::initWithAdSession(video, nullptr);
  ASSERT_TRUE(events);
  FAILS(wrongState, MediaEvents::initWithAdSession(video, error));
  FAILS(wrongOwner, MediaEvents::initWithAdSession(session(2, 1), error));
  FAILS(wrongState, events->startWithDuration(1, 1, error));
  FAILS(wrongState, events->midpoint(error));
  video->start();
  EXPECT_TRUE(events->startWithDuration(1, 1));
  EXPECT_TRUE(events->volumeChangeTo(0));
  for (const float volume : {-0.01F, 1.01F, std::numeric_limits<float>::quiet_NaN()}) {
    FAILS(invalid, events->startWithDuration(1, volume, error));
    FAILS(invalid, events->volumeChangeTo(volume, error));
  }
  FAILS(invalid, events->playerStateChangeTo(static_cast<OMIDVeltoPlayerState>(9), error));
  EXPECT_TRUE(events->adUserInteractionWithType(OMIDVeltoInteractionTypeClick));
  const auto late = session();
  late->start();
  FAILS(wrongState, MediaEvents::initWithAdSession(late, error));
  video->finish();
  FAILS(wrongState, events->complete(error));
}

TEST_F(EngineTest, AFriendlyViewHasAPlainReasonAndIsRegisteredOnce) {
  const auto ad = session();
  const auto view = UIView::make();
  const auto add = [&](const std::optional<std::string>& reason, OMIDVeltoErrorResult error,
                       const std::shared_ptr<UIView>& friendly) {
    return ad->addFriendlyObstruction(friendly, OMIDVeltoFriendlyObstructionCloseAd, reason, error);
  };
  FAILS(invalid, add("not-plain", error, view));
  FAILS(invalid, add(std::string(51, 'a'), error, view));
  FAILS(invalid, add(std::nullopt, error, nullptr));
  EXPECT_TRUE(add(std::string(49, 'a') + " ", nullptr, view));
  FAILS(wrongState, add(std::nullopt, error, view));
  ad->removeFriendlyObstruction(view);
  EXPECT_TRUE(add(std::nullopt, nullptr, view));
  ad->removeAllFriendlyObstructions();
  ad->finish();
  FAILS(wrongState, add(std::nullopt, error, view));
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
           R"(<head """<html>|<script>">"")",
           R"(<head a=/' b = '>' c='>'d>|<script>first()</script>)",
           R"(<head =">|<script>first()</script>)",
       }) {
    const auto bar = marked.find('|');
    const std::string html = marked.substr(0, bar) + marked.substr(bar + 1);
    EXPECT_EQ(Injector::injectScriptContent("s()", html, nullptr),
              marked.substr(0, bar) + "<script>s()</script>" + marked.substr(bar + 1));
  }
  FAILS(invalid, Injector::injectScriptContent("s()", " \n", error));
  FAILS(invalid, Injector::injectScriptContent("", "<p>", error));
  EXPECT_EQ(OMSDK::htmlWithOMSDKInjection("<p>"), "<p>") << "the library's resources have no script here";
}

}  // namespace
}  // namespace velto::test
