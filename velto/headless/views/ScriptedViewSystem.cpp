// The maker of recording peers.
#include "velto/headless/views/ScriptedViewSystem.h"

#include "velto/headless/VirtualQueue.h"

#include <algorithm>
#include <stdexcept>

namespace velto::headless {

class ScriptedViewSystem::Prepared : public PreparedWebContent {
 public:
  explicit Prepared(std::shared_ptr<int> share) : share_(std::move(share)) {}
  void take() { share_.reset(); }

 private:
  std::shared_ptr<int> share_;
};

ScriptedViewSystem::ScriptedViewSystem(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}

RecordingWebView& ScriptedViewSystem::webView() const {
  if (webViews_->empty()) throw std::logic_error("velto::headless: there is no web view");
  return *webViews_->back();
}

void ScriptedViewSystem::endProcess(RecordingWebView& page, NSErrorCause why) {
  auto pages = *webViews_;
  std::erase_if(pages, [process = page.process_](const auto* other) { return other->process_ != process; });
  endProcesses(pages, why);
}

void ScriptedViewSystem::runShortOfMemory() {
  endProcesses(std::vector(*webViews_), NSErrorCause::ProcessOutOfMemory);
}

// All are gone before anybody hears of it, who may then end others or make new ones.
void ScriptedViewSystem::endProcesses(const std::vector<RecordingWebView*>& pages, NSErrorCause why) {
  for (auto* page : pages) page->process_.reset();
  std::vector<std::weak_ptr<RecordingWebView*>> told(pages.size());
  std::transform(pages.begin(), pages.end(), told.begin(), [](const auto* page) { return page->self_; });
  for (const auto& weak : told)
    if (const auto page = weak.lock()) (*page)->fail({"WKErrorDomain", 2, "The web process ended.", why});
}

std::unique_ptr<ViewPeer> ScriptedViewSystem::makeView() {
  queue_->requireMain("ViewSystem::makeView");
  return std::make_unique<RecordingViewPeer>(queue_);
}

std::unique_ptr<ButtonPeer> ScriptedViewSystem::makeButton() {
  queue_->requireMain("ViewSystem::makeButton");
  return std::make_unique<RecordingButtonPeer>(queue_);
}

std::unique_ptr<WebViewPeer> ScriptedViewSystem::makeWebView(const WKWebViewConfiguration& configuration) {
  queue_->requireMain("ViewSystem::makeWebView");
  ++webViewsMade_;
  if (auto* content = dynamic_cast<Prepared*>(configuration.preparedContent.get())) content->take();
  std::unique_ptr<RecordingWebView> view(new RecordingWebView(queue_, configuration));
  view->finishesByItself_ = [finish = pagesFinish_] { return *finish; };
  webViews_->push_back(view.get());
  view->registration_ = Handle([list = webViews_, peer = view.get()] { std::erase(*list, peer); });
  return view;
}

std::shared_ptr<PreparedWebContent> ScriptedViewSystem::prepareWebContent(WKWebView* replacing,
                                                                          WebContentUse) {
  queue_->requireMain("ViewSystem::prepareWebContent");
  if (replacing) return nullptr;
  meanwhile_.reset();
  ++contentPrepared_;
  return std::make_shared<Prepared>(prepared_);
}

void ScriptedViewSystem::expectWebContent(std::function<Handle()> meanwhile) {
  queue_->requireMain("ViewSystem::expectWebContent");
  if (contentExpected_++ > 0 || contentPrepared_ > 0 || webViewsMade_ > 0) return;
  meanwhile_ = std::make_shared<Handle>();
  queue_->post([kept = std::weak_ptr(meanwhile_), meanwhile = std::move(meanwhile)] {
    if (const auto handle = kept.lock()) *handle = meanwhile();
  });
}

Handle ScriptedViewSystem::displayLink(std::function<void(double)> tick) {
  queue_->requireMain("ViewSystem::displayLink");
  return queue_->every(std::chrono::nanoseconds(16'666'667),
                       [queue = std::weak_ptr(queue_), tick = std::move(tick)] {
                         if (auto alive = queue.lock()) tick(alive->monotonicSeconds());
                       });
}

}  // namespace velto::headless
