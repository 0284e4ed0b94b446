// Real pages in a real engine: clients find the service in each of the ways that public ones try, and hear
// events of the right shape in the right order. What needs no engine stands in tests/scripts/measurement; an ad's own
// client is played in examples/creatives/measured.steps.
#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/measurement/OMIDVeltoAdEvents.h"
#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoMediaEvents.h"
#include "velto/measurement/OMIDVeltoVASTProperties.h"
#include "velto/measurement/OMSDK.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/platform/ui/WKWebView.h"

#include <mutex>

#include "../support/AdWindow.h"
#include "../support/LoopbackServer.h"

namespace velto::test {
namespace {

// A client as public scripts have it, written after the message contract alone. verify(by) listens to a session and to all
// of its events, which go to report() where there is one, else to the list `log` of the page at the top.
const std::string client = R"(
function verify(by) {
  const properties = window.omidVerificationProperties || {};
  const handlers = {};
  let send, way;
  const note = (event) => {
    if (window.report) report(event);
    else top.postMessage({ log: JSON.parse(JSON.stringify({ by, way, event })) }, '*');
  };
  const take = (message) => {
    if (!message || message.omid_message_method !== 'response') return;
    if (handlers[message.omid_message_guid]) handlers[message.omid_message_guid](message.omid_message_args[0]);
  };
  for (const target of [properties.serviceWindow, top]) {
    if (!target || send) continue;
    let service = null, present = false;
    try { service = target.omid && target.omid.v1_VerificationServiceCommunication; } catch (e) {}
    try { present = !!(target.frames['omid_v1_present'] && target.frames['omid_v1_present_app']); } catch (e) {}
    if (service) {
      const self = { handleExportedMessage: take };
      send = (message) => service.handleExportedMessage(message, self);
      way = 'direct';
    } else if (present) {
      addEventListener('message', (event) => take(event.data));
      send = (message) => target.postMessage(message, '*');
      way = 'posted';
    }
  }
  const call = (method, first) => {
    const guid = by + Math.random();
    handlers[guid] = note;
    send({ omid_message_guid: guid, omid_message_method: 'VerificationService.' + method,
      omid_message_version: '1.4.0', omid_message_args: [first, properties.injectionId] });
  };
  call('addSessionListener', by);
  for (const type of ['impression', 'geometryChange', 'media']) call('addEventListener', type);
}
)";

// Serves one verification script, which may send to /heard all that it has heard so far.
class ScriptServer {
 public:
  explicit ScriptServer(const std::string& script) {
    server_->Get("/heard", [this](const auto& request, auto&) {
      std::lock_guard lock(mutex_);
      const auto& all = request.params.begin()->first;
      if (all.size() > heard_.size()) heard_ = all;
    });
    server_->Get("/verify.js",
                 [script](const auto&, auto& response) { response.set_content(script, "text/javascript"); });
    server_.start();
  }
  std::string url() const { return server_.address("/verify.js"); }
  std::string heard() {
    std::lock_guard lock(mutex_);
    return heard_;
  }

 private:
  std::mutex mutex_;
  std::string heard_;
  LoopbackServer server_;
};

struct LoadWatch : WKNavigationDelegate {
  bool finished = false;
  void webView(WKWebView&, const WKNavigationAction& action, const DecisionHandler& decide) override {
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
    gtk::install({.applicationIdentifier = "org.example.pages", .mayReachLocalNetwork = true});
    VeltoUtilities::activateOMSDK();
    partner_ = OMIDVeltoPartner::initWithName("Velto", "4.0.10");
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

  // A page with the client.
  void load(const std::string& body) {
    view_ = WKWebView::initWithFrame({{40, 50}, {320, 100}}, {});
    view_->setNavigationDelegate(watch_);
    host_->view()->addSubview(view_);
    view_->loadHTMLString(OMSDK::htmlWithOMSDKInjection(
                              "<!DOCTYPE html><html><head><script>const log = []; addEventListener("
                              "'message', (e) => { if (e.data && e.data.log) log.push(e.data.log); });" +
                              client + "</script></head><body>" + body + "</body></html>"),
                          std::nullopt);
    ASSERT_TRUE(runUntil([&] { return watch_->finished; }));
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
  // What a client of the page knows of its events.
  JSON heard(const std::string& by, const std::string& entry = "e.event.type") {
    return value("log.filter(e => e.by === '" + by + "').map(e => " + entry + ").join()");
  }
  void open(OMIDVeltoCreativeType creative, OMIDVeltoOwner owner, OMIDVeltoOwner media,
            const std::shared_ptr<const OMIDVeltoAdSessionContext>& context) {
    session_ = OMIDVeltoAdSession::initWithConfiguration(
        OMIDVeltoAdSessionConfiguration::initWithCreativeType(creative, OMIDVeltoImpressionTypeBeginToRender,
                                                              owner, media, false, nullptr),
        context, nullptr);
  }
  void startHTML() {
    open(OMIDVeltoCreativeTypeHTMLDisplay, OMIDVeltoOwnerJavaScript, OMIDVeltoOwnerNone,
         OMIDVeltoAdSessionContext::initWithPartner(partner_, view_, std::nullopt, "", nullptr));
    session_->setMainAdView(view_);
    session_->start();
  }

  GtkWindow* window_ = nullptr;
  std::shared_ptr<UIViewController> host_;
  std::shared_ptr<LoadWatch> watch_ = std::make_shared<LoadWatch>();
  std::shared_ptr<WKWebView> view_;
  std::shared_ptr<const OMIDVeltoPartner> partner_;
  std::shared_ptr<OMIDVeltoAdSession> session_;
};

TEST_F(PagesTest, ClientsFindTheServiceInEveryWay) {
  // The inline script is the first thing of the body: presence must have been announced by then.
  load(
      "<script>const present = 'omid_v1_present' in frames && 'omid_v1_present_app' in frames;"
      "const hear = (event) => log.push({ by: 'global', event });"
      "omid3p.registerSessionObserver(hear, 'global'); omid3p.addEventListener('geometryChange', "
      "hear);</script>"
      "<iframe srcdoc=\"<script>" +
      client + "verify('same-origin')</script>\"></iframe><iframe sandbox=allow-scripts srcdoc=\"<script>" +
      client + "verify('sandboxed')</script>\"></iframe>");
  EXPECT_EQ(value("present"), JSON(true));
  startHTML();
  EXPECT_TRUE(holds("log.filter(e => e.event.type === 'geometryChange').length === 3"));
  for (const std::string by : {"global", "same-origin", "sandboxed"})
    EXPECT_EQ(heard(by), JSON("sessionStart,geometryChange")) << by;
  EXPECT_EQ(heard("same-origin", "e.way"), JSON("direct,direct"));
  EXPECT_EQ(heard("sandboxed", "e.way"), JSON("posted,posted"));
  view_->removeFromSuperview();  // as a refresh does it
  EXPECT_TRUE(holds("log.filter(e => e.event.type === 'sessionFinish').length === 3"));
}

TEST_F(PagesTest, VerificationScriptsThatTheAdNamesRunInFramesOfTheirOwn) {
  const ScriptServer server(client +
                            "verify('named'); top.postMessage({ log: { by: 'inside', event: { type: ["
                            "omidVerificationProperties.injectionSource, "
                            "Object.keys(omidVerificationProperties).sort(), origin].join() } } }, '*');");
  load(
      "<script>verify('other'); omid.v1_SessionServiceCommunication.handleExportedMessage({ "
      "omid_message_guid: "
      "'g', omid_message_method: 'SessionService.injectVerificationScriptResources', omid_message_version: "
      "'1.4.0', omid_message_args: [[{ resourceUrl: '" +
      server.url() +
      "', vendorKey: 'named', verificationParameters: 'secret', accessMode: 'limited' }], 'own'] }, { "
      "handleExportedMessage() {} });</script>");
  EXPECT_EQ(value("document.querySelectorAll('iframe').length"), JSON(2)) << "not before the session starts";
  startHTML();
  ASSERT_TRUE(holds("log.filter(e => e.event.type === 'geometryChange').length === 2"));
  EXPECT_EQ(heard("inside"), JSON("app,injectionId,injectionSource,serviceWindow,null"));
  EXPECT_EQ(heard("named", "[e.way, e.event.type, e.event.data.verificationParameters].join(' ')"),
            JSON("posted sessionStart secret,posted geometryChange "));
  EXPECT_EQ(heard("other", "'verificationParameters' in e.event.data"), JSON("false,false"));
}

TEST_F(PagesTest, NativeSessionsRunTheirScriptsInAHiddenPage) {
  // What it hears it tells its own server, as such scripts do.
  ScriptServer server(client + R"(
const came = Date.now(), source = document.currentScript.src, all = [];
function report({ type, timestamp, data }) {
  const more = { sessionStart: (d) => d.verificationParameters, impression: (d) => d.adView.reasons,
    start: (d) => Object.entries(d), complete: () => timestamp <= came }[type];
  all.push(type + (more ? ':' + more(data) : ''));
  new Image().src = new URL('/heard?' + encodeURIComponent(all.join(' ')), source);
}
verify('vendor');)");
  open(OMIDVeltoCreativeTypeVideo, OMIDVeltoOwnerNative, OMIDVeltoOwnerNative,
       OMIDVeltoAdSessionContext::initWithPartner(partner_, VeltoAdManager::getOMSKJs(),
                                                  {OMIDVeltoVerificationScriptResource::initWithURL(
                                                      *NSURL::URLWithString(server.url()), "vendor", "p")},
                                                  std::nullopt, "", nullptr));
  const auto adEvents = OMIDVeltoAdEvents::initWithAdSession(session_, nullptr);
  const auto mediaEvents = OMIDVeltoMediaEvents::initWithAdSession(session_, nullptr);
  EXPECT_TRUE(adEvents->loadedWithVastProperties(
      OMIDVeltoVASTProperties::initWithAutoPlay(true, OMIDVeltoPositionStandalone), nullptr));
  session_->start();
  adEvents->impressionOccurredWithError(nullptr);
  mediaEvents->startWithDuration(12, 0.25F);
  mediaEvents->complete();  // all before the page and the script are there
  // Each of its listeners hears in the order of happening, and when that was, not when the script came.
  const std::string before =
      "sessionStart:p impression:notFound geometryChange loaded start:duration,12,mediaPlayerVolume,0.25,"
      "videoPlayerVolume,0.25,deviceVolume,1 complete:true";
  EXPECT_TRUE(runUntil([&] { return server.heard() == before; })) << server.heard();
  session_->finish();
  EXPECT_TRUE(runUntil([&] { return server.heard() == before + " sessionFinish"; })) << server.heard();
}

}  // namespace
}  // namespace velto::test
