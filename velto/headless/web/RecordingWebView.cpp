// Records loads and scripts; the test or the automatic mode plays the page.
#include "velto/headless/web/RecordingWebView.h"

#include "velto/headless/HeadlessPlatform.h"

#include <algorithm>
#include <stdexcept>

namespace velto::headless {

RecordingWebView::RecordingWebView(std::shared_ptr<VirtualQueue> queue,
                                   const WKWebViewConfiguration& configuration)
    : RecordingViewPeer(std::move(queue)),
      configuration_(configuration),
      usedPreparedContent_(configuration.preparedContent != nullptr),
      sharesProcess_(!configuration.relatedWebView.expired()),
      self_(std::make_shared<RecordingWebView*>(this)) {
  configuration_.preparedContent.reset();
  if (const auto related = configuration.relatedWebView.lock()) process_ = of(*related).process_;
  if (!process_) process_ = std::make_shared<int>();
}

RecordingWebView& RecordingWebView::of(const WKWebView& webView) {
  return dynamic_cast<RecordingWebView&>(webView.webPeer());
}

WKWebView& RecordingWebView::webView() const {
  return dynamic_cast<WKWebView&>(*owner());
}

bool RecordingWebView::hasRun(const std::string& scriptPart) const {
  return std::any_of(scripts_.begin(), scripts_.end(),
                     [&](const auto& script) { return script.find(scriptPart) != std::string::npos; });
}

WKNavigationActionPolicy RecordingWebView::navigate(const std::string& url, WKNavigationType type) {
  auto parsed = NSURL::URLWithString(url);
  if (!parsed) throw std::invalid_argument("velto::headless: no URL: " + url);
  return navigate({std::move(parsed), type});
}

WKNavigationActionPolicy RecordingWebView::navigate(const WKNavigationAction& action) {
  constexpr double touchCounts = 2;  // seconds
  const bool isTouched = touched_ && queue().monotonicSeconds() <= *touched_ + touchCounts;
  auto* platform = dynamic_cast<Platform*>(velto::Platform::currentOrNull());
  if (!platform) return webView().peerDecidePolicy(action);
  const ScriptedApplication::PageActs acts(platform->application(), isTouched);
  return webView().peerDecidePolicy(action);
}

void RecordingWebView::touch() {
  touched_ = queue().monotonicSeconds();
}

void RecordingWebView::finish() {
  webView().peerDidFinishNavigation();
}

void RecordingWebView::fail(const NSError& error) {
  webView().peerDidFailNavigation(error);
}

void RecordingWebView::addUserScript(const WKUserScript& script) {
  queue().requireMain("WebViewPeer::addUserScript");
  configuration_.userContentController.addUserScript(script);
}

void RecordingWebView::loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) {
  queue().requireMain("WebViewPeer::loadHTMLString");
  if (!process_) process_ = std::make_shared<int>();
  loads_.push_back({html, baseURL});
  if (!finishesByItself_()) return;
  queue().post([weak = std::weak_ptr(self_), load = loads_.size()] {
    const auto alive = weak.lock();
    if (alive && (*alive)->loads_.size() == load) (*alive)->finishByItself();
  });
}

void RecordingWebView::finishByItself() {
  // The order of an engine: the load ends, then the page's own script takes its turn.
  const std::weak_ptr weak = self_;
  const std::string html = this->html();
  finish();
  for (const char* signal : {"velto://failLoad", "velto://loadFinished"}) {
    if (weak.expired() || html.find(signal) == std::string::npos) continue;
    navigate(signal);
    return;
  }
}

void RecordingWebView::evaluateJavaScript(
    const std::string& script, std::function<void(std::optional<JSON>, std::optional<NSError>)> completion) {
  queue().requireMain("WebViewPeer::evaluateJavaScript");
  scripts_.push_back(script);
  queue().post([weak = std::weak_ptr(self_), load = loads_.size(), script,
                completion = std::move(completion)] {
    const auto alive = weak.lock();
    if (!alive || !*alive) return;
    RecordingWebView& view = **alive;
    const bool pageGone = view.loads_.size() != load || !view.process_;
    const ScriptAnswers answers = view.answers_;  // a copy: the answerer may be replaced meanwhile
    auto value = pageGone ? std::nullopt : answers ? answers(script) : std::optional(JSON());
    if (!completion) return;
    if (value)
      completion(std::move(value), std::nullopt);
    else
      completion(std::nullopt, NSError{"WKErrorDomain", pageGone ? 3 : 4,
                                       pageGone ? "The page went away." : "A JavaScript exception occurred"});
  });
}

void RecordingWebView::setScrollBehavior(const ScrollBehavior& behavior) {
  queue().requireMain("WebViewPeer::setScrollBehavior");
  scroll_ = behavior;
}

// --- what the page costs

struct RecordingWebView::UseWait {
  WebPageUse from;
  double processorSeconds = 0;
  std::function<void()> then;

  bool isOver(const WebPageUse& use) const {
    return use.process != from.process || use.networkBytes != from.networkBytes ||
           use.processorSeconds.value_or(0) >= from.processorSeconds.value_or(0) + processorSeconds;
  }
};

Handle RecordingWebView::afterUse(double processorSeconds, std::function<void()> then) {
  auto wait = std::make_shared<UseWait>(UseWait{use_, processorSeconds, std::move(then)});
  useWait_ = wait;
  return Handle([wait]() mutable { wait.reset(); });
}

WebPageUse RecordingWebView::use() const {
  WebPageUse use = use_;
  use.hidden = use.hidden || !inSight_ || !webView().isInWindow();
  return use;
}

void RecordingWebView::setUse(const WebPageUse& use) {
  use_ = use;
  const auto wait = useWait_.lock();
  if (!wait || !wait->isOver(use)) return;
  useWait_.reset();
  queue().post([weak = std::weak_ptr(wait)] {
    if (const auto alive = weak.lock()) alive->then();
  });
}

}  // namespace velto::headless
