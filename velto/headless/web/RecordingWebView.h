// The web view of the headless platform. It runs no page: it records what it is given, and the test plays the
// page's part (or lets every page finish by itself, see ScriptedViewSystem). Find one with
// Platform::webViews(). Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/headless/views/RecordingViews.h"
#include "velto/platform/ui/WKWebView.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto::headless {

class ScriptedViewSystem;

class VELTO_EXPORT RecordingWebView : public RecordingViewPeer, public WebViewPeer {
 public:
  struct Load {
    std::string html;
    std::optional<NSURL> baseURL;
  };
  // The value of a script, or nothing for a script that throws.
  using ScriptAnswers = std::function<std::optional<JSON>(const std::string& script)>;

  // The peer of a web view made on the headless platform.
  static RecordingWebView& of(const WKWebView& webView);
  WKWebView& webView() const;

  // What was given.
  const WKWebViewConfiguration& configuration() const { return configuration_; }
  const std::vector<Load>& loads() const { return loads_; }
  // The markup of the last load, empty before the first.
  std::string html() const { return loads_.empty() ? "" : loads_.back().html; }
  const std::vector<std::string>& scripts() const { return scripts_; }
  bool hasRun(const std::string& scriptPart) const;  // whether a script containing the text was evaluated
  const ScrollBehavior& scrollBehavior() const { return scroll_; }
  bool isMuted() const { return muted_; }
  bool usedPreparedContent() const { return usedPreparedContent_; }

  // Playing the page. Each reports to the web view's delegate inside the call, and the view may be gone
  // afterwards. Throws std::invalid_argument when the text is no URL.
  WKNavigationActionPolicy navigate(const std::string& url, WKNavigationType type = WKNavigationType::Other);
  WKNavigationActionPolicy navigate(const WKNavigationAction& action);
  void finish();
  void fail(const NSError& error);
  // How scripts are answered; until set, each has the value
  // null. Answers come as tasks of the main queue, in order.
  void answerScripts(ScriptAnswers answers) { answers_ = std::move(answers); }
  // What the page has cost by now; nothing is known of it until this is called.
  void setUse(const WebPageUse& use);
  bool isInSight() const { return inSight_; }
  // Whether its page has a process (ScriptedViewSystem::endProcess).
  bool hasProcess() const { return process_ != nullptr; }
  // A person's finger on the page; HostWindow::tap does it. See ScriptedApplication::setPagesNeedTouch.
  void touch();

  void addUserScript(const WKUserScript& script) override;
  void loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) override;
  void evaluateJavaScript(
      const std::string& script,
      std::function<void(std::optional<JSON>, std::optional<NSError>)> completion) override;
  bool hasWarmProcess() const override { return usedPreparedContent_ || sharesProcess_; }
  void setMuted(bool muted) override { muted_ = muted; }
  void setScrollBehavior(const ScrollBehavior& behavior) override;
  WebPageUse use() const override;
  Handle afterUse(double processorSeconds, std::function<void()> then) override;
  void setInSight(bool inSight) override { inSight_ = inSight; }

 private:
  friend class ScriptedViewSystem;
  RecordingWebView(std::shared_ptr<VirtualQueue> queue, const WKWebViewConfiguration& configuration);
  void finishByItself();

  WKWebViewConfiguration configuration_;
  bool usedPreparedContent_ = false;
  bool sharesProcess_ = false;
  std::shared_ptr<void> process_;  // null once it has ended
  std::optional<double> touched_;  // monotonic seconds
  std::vector<Load> loads_;
  std::vector<std::string> scripts_;
  ScrollBehavior scroll_;
  bool muted_ = false;
  bool inSight_ = true;
  WebPageUse use_;
  struct UseWait;
  std::weak_ptr<UseWait> useWait_;  // its handle holds it
  ScriptAnswers answers_;
  std::function<bool()> finishesByItself_;
  Handle registration_;
  std::shared_ptr<RecordingWebView*> self_;  // expires with the view; tasks hold it weakly
};

}  // namespace velto::headless
