// Statements to the service.
#include "velto/measurement/ServicePage.h"

#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoScriptInjector.h"
#include "velto/platform/Clock.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr char emptyPage[] = "<!DOCTYPE html><html><head></head><body></body></html>";
constexpr auto lifeAfterFinish = 1s;
constexpr size_t mostWaiting = 100;
constexpr double milliseconds = 1000;  // a second
constexpr char geometry[] = "geometry";
constexpr char lossHost[] = "not-loaded.invalid";  // see resources.js

}  // namespace

std::shared_ptr<ServicePage> ServicePage::ofAd(const std::shared_ptr<WKWebView>& webView) {
  return std::shared_ptr<ServicePage>(new ServicePage(webView));
}

std::shared_ptr<ServicePage> ServicePage::hidden(const std::string& script) {
  const auto markup = OMIDVeltoScriptInjector::injectScriptContent(script, emptyPage, nullptr);
  if (!markup) return nullptr;
  std::shared_ptr<ServicePage> page(new ServicePage(WKWebView::initWithFrame({}, {})));
  page->state_ = State::Loading;
  page->webView_->setNavigationDelegate(page);
  page->webView_->loadHTMLString(*markup, std::nullopt);
  return page;
}

void ServicePage::observeLoss(size_t scripts, LossObserver lost) {
  lost_ = std::move(lost);
  while (lossWords_.size() < scripts) lossWords_.push_back(uuidString());
}

bool ServicePage::wasTakenAway() {
  const bool shown = webView_->superview() != nullptr;
  wasShown_ = wasShown_ || shown;
  return wasShown_ && !shown;
}

int64_t ServicePage::now() {
  auto* platform = Platform::currentOrNull();
  return platform ? std::llround(platform->clock().secondsSince1970() * milliseconds) : 0;
}

// A page that is slow, or hangs, is told of one geometry at a time.
void ServicePage::run(const Statement& statement) {
  std::function<void(std::optional<JSON>, std::optional<NSError>)> taken;
  if (statement.operation == geometry) {
    takesGeometry_ = true;
    taken = [weak = std::weak_ptr(shared_from_this())](const auto&, const auto&) {
      if (const auto alive = weak.lock()) alive->geometryTaken();
    };
  }
  webView_->evaluateJavaScript(statement.text, std::move(taken));
  if (!OMIDVeltoSDK::sharedInstance()->tracer()) return;
  webView_->evaluateJavaScript("window.__veltoOMID?__veltoOMID.trace():[]",
                               [](const std::optional<JSON>& events, const std::optional<NSError>&) {
                                 const auto tracer = OMIDVeltoSDK::sharedInstance()->tracer();
                                 if (!tracer || !events || !events->array()) return;
                                 for (const auto& event : *events->array()) tracer(event);
                               });
}

void ServicePage::geometryTaken() {
  takesGeometry_ = false;
  if (state_ != State::Loading && Platform::currentOrNull())
    for (const auto& statement : std::exchange(waiting_, {})) run(statement);
}

void ServicePage::keep(Statement statement) {
  if (statement.operation == geometry)
    std::erase_if(waiting_, [](const auto& kept) { return kept.operation == geometry; });
  else if (waiting_.size() >= mostWaiting && statement.operation != "finish")
    return;
  waiting_.push_back(std::move(statement));
}

void ServicePage::call(const std::string& operation, int64_t time, const std::string& arguments) {
  if (state_ == State::Failed || !Platform::currentOrNull()) return;
  std::string text = "window.__veltoOMID&&__veltoOMID.";
  text.append(operation).append("(").append(std::to_string(time));
  if (!arguments.empty()) text.append(",").append(arguments);
  Statement statement{operation, text.append(")")};
  const bool waits = state_ == State::Loading || (takesGeometry_ && operation == geometry);
  if (waits) return keep(std::move(statement));
  // What was seen before comes before.
  for (const auto& earlier : std::exchange(waiting_, {})) run(earlier);
  run(statement);
}

void ServicePage::finish(std::shared_ptr<ServicePage> page) {
  auto* platform = Platform::currentOrNull();
  if (!page || !platform) return;
  page->call("finish", now(), "");
  // An ad that is gone has nothing more to say to whoever showed it, or to anybody who would hear it.
  if (!page->webView_->superview()) {
    if (page->state_ == State::Loaded) page->webView_->setNavigationDelegate({});
    page->webView_->setMuted(true);
  }
  platform->mainQueue().postAfter(lifeAfterFinish, [page = std::move(page)] {});
}

// The hidden page navigates nowhere; frames for its scripts come without an address.
void ServicePage::webView(WKWebView&, const WKNavigationAction& action,
                          const DecisionHandler& decisionHandler) {
  const bool isFrame = action.requestURL && action.requestURL->scheme() == "about";
  decisionHandler(isFrame ? WKNavigationActionPolicy::Allow : WKNavigationActionPolicy::Cancel);
  if (!action.requestURL || action.requestURL->host() != lossHost || !lost_) return;
  const auto path = action.requestURL->path();
  const auto word =
      std::find_if(lossWords_.begin(), lossWords_.end(), [&](const auto& one) { return path == "/" + one; });
  if (word != lossWords_.end()) lost_(static_cast<size_t>(word - lossWords_.begin()));
}

void ServicePage::webView(WKWebView&, const WKNavigation&) {
  if (state_ != State::Loading) return;
  state_ = State::Loaded;
  for (const auto& statement : std::exchange(waiting_, {})) run(statement);
}

void ServicePage::webView(WKWebView&, const WKNavigation&, const NSError&) {
  const bool isNew = std::exchange(state_, State::Failed) == State::Loading;
  waiting_.clear();
  if (isNew && lost_) lost_(std::nullopt);
}

}  // namespace velto
