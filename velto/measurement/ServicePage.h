// The page in which a session's service script runs, and the statements that it gets: the ad's own page, or
// for an ad that is none a hidden one. Made by a session; it outlives the session by a second, so that
// verification scripts can still send what they have to. Main thread.
#pragma once

#include "velto/platform/ui/WKWebView.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class ServicePage final : public WKNavigationDelegate, public std::enable_shared_from_this<ServicePage> {
 public:
  // The page of an ad, which has the script already.
  static std::shared_ptr<ServicePage> ofAd(const std::shared_ptr<WKWebView>& webView);
  // A page that nobody sees, with nothing but the script. Statements wait until it has loaded.
  static std::shared_ptr<ServicePage> hidden(const std::string& script);
  // Of a hidden page: told which of so many verification scripts, by its place in the session's start, cannot be loaded; nothing:
  // none can. The page tells it by the script's word, which goes into the session's start and is nobody else's to guess.
  using LossObserver = std::function<void(std::optional<size_t> script)>;
  void observeLoss(size_t scripts, LossObserver lost);
  const std::vector<std::string>& lossWords() const { return lossWords_; }

  const std::shared_ptr<WKWebView>& webView() const { return webView_; }
  // A page that was in a view and is in none any more: whoever showed it is done with it.
  bool wasTakenAway();

  // Calls an operation of the service (application.js) about something that happened at that time (milliseconds
  // since 1970); a page without the service stays as it is. What waits is bounded, whatever happens to the page:
  // of the geometry only the latest does, and of the rest the first hundred.
  void call(const std::string& operation, int64_t time, const std::string& arguments);
  static int64_t now();
  // Tells the scripts that it is over, and lets go of the page a second later.
  static void finish(std::shared_ptr<ServicePage> page);

  void webView(WKWebView& webView, const WKNavigationAction& action,
               const DecisionHandler& decisionHandler) override;
  void webView(WKWebView& webView, const WKNavigation& navigation) override;
  void webView(WKWebView& webView, const WKNavigation& navigation, const NSError& error) override;

 private:
  enum class State { Loading, Loaded, Failed };
  struct Statement {
    std::string operation;
    std::string text;
  };
  void run(const Statement& statement);
  void geometryTaken();
  void keep(Statement statement);
  explicit ServicePage(std::shared_ptr<WKWebView> webView) : webView_(std::move(webView)) {}

  std::shared_ptr<WKWebView> webView_;
  bool wasShown_ = false;
  State state_ = State::Loaded;
  std::vector<Statement> waiting_;
  LossObserver lost_;
  std::vector<std::string> lossWords_;
  bool takesGeometry_ = false;  // it has been told of one, and has not answered yet
};

}  // namespace velto
