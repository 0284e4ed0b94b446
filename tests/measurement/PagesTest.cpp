// Real pages in a real engine: clients find the service in each of the ways that public ones try, and hear
// events of the right shape in the right order.
#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/measurement/OMIDVeltoAdEvents.h"
#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoMediaEvents.h"
#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoVASTProperties.h"
#include "velto/measurement/OMSDK.h"
#include "velto/platform/Clock.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/platform/ui/WKWebView.h"

#include <fstream>
#include <map>
#include <mutex>

#include "../support/AdWindow.h"
#include "../support/LoopbackServer.h"
#include "Clients.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;

// Serves one verification script.
class ScriptServer {
 public:
  explicit ScriptServer(std::string script) {
    server_->Get("/heard", [this](const auto& request, auto&) {
      std::lock_guard lock(mutex_);
      heard_.push_back(request.params.begin()->first);
    });
    server_->Get("/verify.js", [script = std::move(script)](const auto&, auto& response) {
      response.set_content(script, "text/javascript");
    });
    server_.start();
  }
  std::string url() const { return server_.address("/verify.js"); }
  // What was sent to /heard, in the order in which it came.
  std::vector<std::string> heard() {
    std::lock_guard lock(mutex_);
    return heard_;
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> heard_;
  LoopbackServer server_;
};

struct LoadWatch : WKNavigationDelegate {
  bool finished = false;
  int asked = 0;
  void webView(WKWebView&, const WKNavigationAction& action, const DecisionHandler& decide) override {
    ++asked;
    const bool isFrame = action.requestURL && action.requestURL->scheme() == "about";
    decide(isFrame ? WKNavigationActionPolicy::Allow : WKNavigationActionPolicy::Cancel);
  }
  void webView(WKWebView&, const WKNavigation&) override { finished = true; }
  void webView(WKWebView&, const WKNavigation&, const NSError&) override {}
};

class PagesTest : public testing::Test {
 protected:
  PagesTest() {
    gtk_init();
    gtk::install({.applicationIdentifier = "org.example.pages"});
    VeltoUtilities::activateOMSDK();
    window_ = newWindow(400, 500);
    host_ = present(window_);
  }
  ~PagesTest() override {
    session_.reset();
    view_.reset();
    host_.reset();
    gtk::uninstall();
    gtk_window_destroy(window_);
  }

  void show(const std::string& page) {
    view_ = WKWebView::initWithFrame({{40, 50}, {320, 100}}, {});
    view_->setNavigationDelegate(watch_);
    host_->view()->addSubview(view_);
    watch_->finished = false;
    view_->loadHTMLString(OMSDK::htmlWithOMSDKInjection(page), std::nullopt);
    ASSERT_TRUE(runUntil([&] { return watch_->finished; }));
  }
  // A page with both clients.
  void load(const std::string& body) {
    show("<!DOCTYPE html><html><head>" + logging + "<script>" + verificationClient + sessionClient +
         "</script></head><body>" + body + "</body></html>");
  }
  JSON value(const std::string& script) {
    std::optional<JSON> result;
    view_->evaluateJavaScript(script, [&](auto json, auto error) {
      result = error ? JSON(error->localizedDescription) : json.value_or(JSON());
    });
    EXPECT_TRUE(runUntil([&] { return result.has_value(); })) << script;
    return result.value_or(JSON());
  }
  // Until the page's expression holds.
  bool holds(const std::string& expression) {
    bool held = false;
    return runUntil([&] { return held || (held = value(expression) == JSON(true)); });
  }
  std::string text(const std::string& script) {
    const JSON result = value(script);
    return result.string() ? *result.string() : writeJSON(result, false).value_or("?");
  }
  // The types that a client heard, in order.
  std::string heard(const std::string& by) {
    return text("log.filter(e => e.by === '" + by + "').map(e => e.event.type).join()");
  }
  std::string eventOf(const std::string& by, const std::string& type) {
    return "log.find(e => e.by === '" + by + "' && e.event.type === '" + type + "').event";
  }
  static std::shared_ptr<const OMIDVeltoPartner> partner() {
    return OMIDVeltoPartner::initWithName("Velto", "4.0.10");
  }
  void startHTML(OMIDVeltoCreativeType creative = OMIDVeltoCreativeTypeHTMLDisplay,
                 OMIDVeltoOwner media = OMIDVeltoOwnerNone) {
    session_ = OMIDVeltoAdSession::initWithConfiguration(
        OMIDVeltoAdSessionConfiguration::initWithCreativeType(
            creative, OMIDVeltoImpressionTypeBeginToRender, OMIDVeltoOwnerJavaScript, media, false, nullptr),
        OMIDVeltoAdSessionContext::initWithPartner(partner(), view_, std::nullopt, "ref-1", nullptr),
        nullptr);
    session_->setMainAdView(view_);
    session_->start();
  }

  GtkWindow* window_ = nullptr;
  std::shared_ptr<UIViewController> host_;
  std::shared_ptr<LoadWatch> watch_ = std::make_shared<LoadWatch>();
  std::shared_ptr<WKWebView> view_;
  std::shared_ptr<OMIDVeltoAdSession> session_;
};

const std::string allTypes = "['impression', 'geometryChange', 'media']";

TEST_F(PagesTest, ClientsFindTheServiceInEveryWay) {
  const std::string inFrame = "<script>" + verificationClient +
                              "verify("
                              "'frame', " +
                              allTypes + ")</script>";
  const auto srcdoc = [](std::string text, const std::string& name) {
    for (size_t at = 0; (at = text.find('"', at)) != std::string::npos; at += 6)
      text.replace(at, 1, "&quot;");
    const auto key = text.find("'frame'");
    return text.replace(key, 7, "'" + name + "'");
  };
  // The inline script is the first thing of the body: presence must have been announced by then.
  load(
      "<script>log.push({ by: 'body', event: { type: String('omid_v1_present' in frames && "
      "'omid_v1_present_app' in "
      "frames) } }); verify('direct', " +
      allTypes + "); verify('old', " + allTypes +
      ", '1.0.2');"
      "omid3p.registerSessionObserver((event) => log.push({ by: 'global', event }), 'global');"
      "omid3p.addEventListener('geometryChange', (event) => log.push({ by: 'global', event }));</script>"
      "<iframe srcdoc=\"" +
      srcdoc(inFrame, "same-origin") +
      "\"></iframe>"
      "<iframe sandbox=allow-scripts srcdoc=\"" +
      srcdoc(inFrame, "sandboxed") + "\"></iframe>");
  EXPECT_EQ(heard("body"), "true");
  startHTML();
  const std::string expected = "sessionStart,geometryChange";
  EXPECT_TRUE(holds("log.some(e => e.by === 'sandboxed' && e.event.type === 'geometryChange')"));
  for (const std::string by : {"direct", "old", "global", "same-origin", "sandboxed"})
    EXPECT_EQ(heard(by), expected) << by;
  EXPECT_EQ(
      text("['direct', 'old', 'same-origin', 'sandboxed'].map(by => log.find(e => e.by === by).way).join()"),
      "direct,direct,direct,posted");
  view_->removeFromSuperview();  // as a refresh does it
  EXPECT_TRUE(holds("log.filter(e => e.event.type === 'sessionFinish').length === 5")) << heard("sandboxed");
}

TEST_F(PagesTest, TheAdsOwnClientReportsAndItsElementIsMeasured) {
  std::string traced;
  OMIDVeltoSDK::sharedInstance()->setTracer(
      [&](const JSON& event) { traced += *event.object()->at("type").string() + " "; });
  load(
      "<div id=slot style='position:fixed;left:160px;top:0;width:320px;height:100px'></div><script>"
      "const call = session((event) => { log.push({ by: 'page', event }); call('impressionOccurred', []); });"
      "call('setSlotElement', [document.getElementById('slot')]); call('loaded', [null]);"
      "verify('early', " +
      allTypes + ");</script>");
  startHTML();
  ASSERT_TRUE(holds("log.some(e => e.event.type === 'impression')"));
  EXPECT_EQ(text("log.map(e => e.by + ' ' + e.event.type).join()"),
            "early sessionStart,page sessionStart,early loaded,early geometryChange,early impression")
      << "verification scripts first, then the page's own observer";
  EXPECT_EQ(
      text("(() => { const {app, deviceInfo, deviceCategory, ...c} = " + eventOf("early", "sessionStart") +
           ".data.context; c.slotElement = c.slotElement.id; return JSON.stringify(c, ['accessMode', "
           "'adSessionType', 'customReferenceData', 'omidJsInfo', 'omidImplementer', 'sessionClientVersion', "
           "'partnerName', 'partnerVersion', 'omidNativeInfo', 'slotElement']) + Object.keys(app).sort(); "
           "})()"),
      R"({"accessMode":"full","adSessionType":"html","customReferenceData":"ref-1","omidJsInfo":{)"
      R"("omidImplementer":"velto","sessionClientVersion":"1.4.0","partnerName":"Tester","partnerVersion":"7"},)"
      R"("omidNativeInfo":{"partnerName":"Velto","partnerVersion":"4.0.10"},"slotElement":"slot"}appId,libraryVersion)");
  EXPECT_EQ(text("(a => [a.percentageInView, a.pixelsInView, a.geometry.x, a.onScreenGeometry.width, "
                 "a.reasons].join())(" +
                 eventOf("early", "geometryChange") + ".data.adView)"),
            "50,16000,200,160,clipped");
  value("slot.style.left = 0; dispatchEvent(new Event('scroll'))");
  EXPECT_TRUE(holds("log[log.length - 1].event.data.adView.percentageInView === 100"));
  session_->finish();
  EXPECT_TRUE(runUntil([&] {
    return traced == "sessionStart loaded geometryChange impression geometryChange sessionFinish ";
  })) << traced;
}

TEST_F(PagesTest, VerificationScriptsThatTheAdNamesRunInFramesOfTheirOwn) {
  const ScriptServer server(
      verificationClient + "verify(location.hash || 'named', " + allTypes +
      ");"
      "top.postMessage({ log: { by: 'inside', event: { type: [omidVerificationProperties.injectionSource, "
      "Object.keys(omidVerificationProperties).sort(), origin].join() } } }, '*');");
  load("<script>const call = session(); verify('other', " + allTypes +
       "); call('injectVerificationScriptResources', [[{ resourceUrl: '" + server.url() +
       "', vendorKey: 'named', verificationParameters: 'secret', accessMode: 'limited' }]]);</script>");
  EXPECT_EQ(text("document.querySelectorAll('iframe').length"), "2") << "not before the session starts";
  startHTML();
  ASSERT_TRUE(holds("log.some(e => e.by === 'named' && e.event.type === 'geometryChange')"));
  EXPECT_EQ(heard("named"), "sessionStart,geometryChange");
  EXPECT_EQ(heard("inside"), "app,injectionId,injectionSource,serviceWindow,null");
  EXPECT_EQ(text("(e => [e.way, e.event.data.context.accessMode, "
                 "e.event.data.verificationParameters].join())(log.find(e => e.by === 'named'))"),
            "posted,limited,secret");
  EXPECT_EQ(text("'verificationParameters' in " + eventOf("other", "sessionStart") + ".data"), "false");
}

TEST_F(PagesTest, NativeSessionsRunTheirScriptsInAHiddenPage) {
  // What it hears it tells its own server, as such scripts do.
  ScriptServer server(
      "let count = 0; function report(entry) { new Image().src = new URL('/heard?' + "
      "encodeURIComponent(JSON.stringify({ count: ++count, way: entry.way, event: entry.event })), "
      "document.currentScript ? document.currentScript.src : source); }"
      "const source = document.currentScript.src;" +
      verificationClient + "verify('vendor', " + allTypes + ");");
  const auto resource =
      OMIDVeltoVerificationScriptResource::initWithURL(*NSURL::URLWithString(server.url()), "vendor", " ");
  session_ = OMIDVeltoAdSession::initWithConfiguration(
      OMIDVeltoAdSessionConfiguration::initWithCreativeType(
          OMIDVeltoCreativeTypeVideo, OMIDVeltoImpressionTypeBeginToRender, OMIDVeltoOwnerNative,
          OMIDVeltoOwnerNative, false, nullptr),
      OMIDVeltoAdSessionContext::initWithPartner(partner(), VeltoAdManager::getOMSKJs(), {resource},
                                                 std::nullopt, "", nullptr),
      nullptr);
  const auto adEvents = OMIDVeltoAdEvents::initWithAdSession(session_, nullptr);
  const auto mediaEvents = OMIDVeltoMediaEvents::initWithAdSession(session_, nullptr);
  EXPECT_TRUE(adEvents->loadedWithVastProperties(
      OMIDVeltoVASTProperties::initWithAutoPlay(true, OMIDVeltoPositionStandalone), nullptr));
  session_->start();
  adEvents->impressionOccurredWithError(nullptr);
  mediaEvents->startWithDuration(12, 0.25F);
  mediaEvents->complete();  // all before the page and the script are there
  const auto reported = std::ceil(Platform::current().clock().secondsSince1970() * 1000);
  EXPECT_TRUE(runUntil([&] { return server.heard().size() == 6; }));
  session_->finish();
  EXPECT_TRUE(runUntil([&] { return server.heard().size() == 7; }));

  std::map<int, JSON::Object> events;
  for (const auto& told : server.heard()) {
    const auto entry = *readJSON(told)->object();
    events[static_cast<int>(entry.at("count").number().value())] = *entry.at("event").object();
  }
  std::string types;
  for (const auto& [count, event] : events) types += *event.at("type").string() + " ";
  EXPECT_EQ(types, "sessionStart impression geometryChange loaded start complete sessionFinish ")
      << "to each of its listeners in the order of happening";
  EXPECT_EQ(events[1].at("data").object()->at("verificationParameters"), JSON(" "));
  EXPECT_EQ(events[2].at("data").object()->at("adView").object()->at("reasons"),
            JSON(JSON::Array{"notFound"}));
  EXPECT_EQ(
      events[5].at("data"),
      JSON(JSON::Object{
          {"duration", 12}, {"mediaPlayerVolume", 0.25}, {"videoPlayerVolume", 0.25}, {"deviceVolume", 1}}));
  EXPECT_LE(events[6].at("timestamp").number(), reported) << "not when the script came";
}

}  // namespace
}  // namespace velto::test
