// Makes the peers of the headless platform, keeps the list of live web views, and drives animations at 60
// frames a second of virtual time. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/headless/web/RecordingWebView.h"
#include "velto/platform/ViewSystem.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace velto::headless {

class VELTO_EXPORT ScriptedViewSystem : public ViewSystem {
 public:
  explicit ScriptedViewSystem(std::shared_ptr<VirtualQueue> queue);

  // Web views that exist now, oldest first.
  const std::vector<RecordingWebView*>& webViews() const { return *webViews_; }
  // The newest one. Throws std::logic_error when there is none.
  RecordingWebView& webView() const;
  // From now on each load finishes by itself, in a later turn of the main queue; then a page whose markup
  // mentions velto://failLoad or velto://loadFinished goes there, as one that runs its script would.
  void setPagesFinishByThemselves(bool finish) { *pagesFinish_ = finish; }

  // The web process of that page ends, and with it each page that shares it; loading markup starts another. Memory that
  // runs short ends all of them.
  void endProcess(RecordingWebView& page, NSErrorCause why = NSErrorCause::ProcessCrashed);
  void runShortOfMemory();

  // As on a machine where no page can be shown, until it is mended.
  void failWebContent(NSError error) { contentFailure_ = std::move(error); }
  void mendWebContent() { contentFailure_.reset(); }

  int webViewsMade() const { return webViewsMade_; }
  int contentPrepared() const { return contentPrepared_; }        // times that content was made ready
  int contentExpected() const { return contentExpected_; }        // times that an ad was said to be probable
  long contentHeld() const { return prepared_.use_count() - 1; }  // made ready, neither used nor let go

  std::unique_ptr<ViewPeer> makeView() override;
  std::unique_ptr<ButtonPeer> makeButton() override;
  std::unique_ptr<WebViewPeer> makeWebView(const WKWebViewConfiguration& configuration) override;
  std::shared_ptr<PreparedWebContent> prepareWebContent(WKWebView* replacing, WebContentUse use) override;
  // The moment that disturbs nothing is the next turn of the main queue.
  void expectWebContent(std::function<Handle()> meanwhile) override;
  std::optional<NSError> webContentFailure() override { return contentFailure_; }
  Handle displayLink(std::function<void(double seconds)> tick) override;

 private:
  class Prepared;
  void endProcesses(const std::vector<RecordingWebView*>& pages, NSErrorCause why);
  std::shared_ptr<VirtualQueue> queue_;
  std::shared_ptr<std::vector<RecordingWebView*>> webViews_ =
      std::make_shared<std::vector<RecordingWebView*>>();
  std::shared_ptr<bool> pagesFinish_ = std::make_shared<bool>(false);
  std::shared_ptr<int> prepared_ = std::make_shared<int>(0);  // each piece of content still held owns a share
  std::optional<NSError> contentFailure_;
  int webViewsMade_ = 0;
  int contentPrepared_ = 0;
  int contentExpected_ = 0;
  std::shared_ptr<Handle> meanwhile_;  // until content is prepared
};

}  // namespace velto::headless
