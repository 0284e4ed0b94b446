// Statements to the service.
#include "velto/measurement/ServicePage.h"

#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoScriptInjector.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr char emptyPage[] = "<!DOCTYPE html><html><head></head><body></body></html>";
constexpr auto lifeAfterFinish = 1s;

}  // namespace

std::shared_ptr<ServicePage> ServicePage::ofAd(const std::shared_ptr<WKWebView>& webView) {
  return std::shared_ptr<ServicePage>(new ServicePage(webView));
}

std::shared_ptr<ServicePage> ServicePage::hidden(const std::string& script) {
  const auto markup = OMIDVeltoScriptInjector::injectScriptContent(script, emptyPage, nullptr);
  if (!markup) return nullptr;
  std::shared_ptr<ServicePage> page(new ServicePage(WKWebView::initWithFrame({}, {})));
  page->loaded_ = false;
  page->webView_->setNavigationDelegate(page);
  page->webView_->loadHTMLString(*markup, std::nullopt);
  return page;
}

bool ServicePage::wasTakenAway() {
  const bool shown = webView_->superview() != nullptr;
  wasShown_ = wasShown_ || shown;
  return wasShown_ && !shown;
}

void ServicePage::run(const std::string& statement) {
  webView_->evaluateJavaScript(statement, nullptr);
  if (!OMIDVeltoSDK::sharedInstance()->tracer()) return;
  webView_->evaluateJavaScript("window.__veltoOMID?__veltoOMID.trace():[]",
                               [](const std::optional<JSON>& events, const std::optional<NSError>&) {
                                 const auto tracer = OMIDVeltoSDK::sharedInstance()->tracer();
                                 if (!tracer || !events || !events->array()) return;
                                 for (const auto& event : *events->array()) tracer(event);
                               });
}

void ServicePage::call(const char* operation, const std::string& arguments) {
  if (!Platform::currentOrNull()) return;
  std::string statement = "window.__veltoOMID&&__veltoOMID.";
  statement.append(operation).append("(").append(arguments).append(")");
  if (loaded_)
    run(statement);
  else
    waiting_.push_back(std::move(statement));
}

void ServicePage::finish(std::shared_ptr<ServicePage> page) {
  auto* platform = Platform::currentOrNull();
  if (!page || !platform) return;
  const bool outOfSight = !page->webView_->superview();
  page->call("finish", outOfSight ? "true" : "false");
  // An ad that is gone has nothing more to say to whoever showed it.
  if (page->loaded_ && outOfSight) page->webView_->setNavigationDelegate({});
  platform->mainQueue().postAfter(lifeAfterFinish, [page = std::move(page)] {});
}

// The hidden page navigates nowhere; frames for its scripts come without an address.
void ServicePage::webView(WKWebView&, const WKNavigationAction& action,
                          const DecisionHandler& decisionHandler) {
  const bool isFrame = action.requestURL && action.requestURL->scheme() == "about";
  decisionHandler(isFrame ? WKNavigationActionPolicy::Allow : WKNavigationActionPolicy::Cancel);
}

void ServicePage::webView(WKWebView&, const WKNavigation&) {
  loaded_ = true;
  for (const auto& statement : std::exchange(waiting_, {})) run(statement);
}

void ServicePage::webView(WKWebView&, const WKNavigation&, const NSError&) {
  waiting_.clear();
}

}  // namespace velto
