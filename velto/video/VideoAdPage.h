// What belongs to a video ad and is drawn by the web engine: an icon over the video, a companion beside it. Its view loads by
// itself; what a person clicks in it opens outside the application, as far as the platform lets a page. Main thread.
#pragma once

#include "velto/platform/ui/UIViewController.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/vast/VASTCreative.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class VideoAdPage final : public UIViewController, public WKNavigationDelegate {
 public:
  struct Content {
    std::vector<VASTResource> resources;
    std::string clickThrough, alternativeText;
  };
  struct Actions {
    std::function<void()> shown;  // the first time that it has loaded and is in a window
    // A person clicked; gives where the ad wants that to lead, or nothing for where the link leads.
    std::function<std::optional<std::string>()> clicked;
    std::function<void()> failed = {};             // once: its picture, or all of it, cannot be had
    std::function<void(bool opens)> pressed = {};  // after `clicked`: whether an address is opened
  };

  static bool canShow(const VASTCompanion& companion);
  // Null when none of the resources can be drawn.
  static std::shared_ptr<VideoAdPage> make(const Content& content, CGSize size, Actions actions);

  void viewWillAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;
  void webView(WKWebView& webView, const WKNavigationAction& action,
               const DecisionHandler& decisionHandler) override;
  void webView(WKWebView& webView, const WKNavigation& navigation) override;
  void webView(WKWebView& webView, const WKNavigation& navigation, const NSError& error) override;

 private:
  VideoAdPage() = default;
  void look();
  void fail();

  Actions actions_;
  std::shared_ptr<WKWebView> page_;
  bool inWindow_ = false, loaded_ = false, told_ = false;
};

}  // namespace velto
