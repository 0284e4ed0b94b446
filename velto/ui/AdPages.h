// The pages of a shown ad, and what watches them: its own, and the second part of an expanded one while there is one. A
// base of VeltoShownAd; main thread.
#pragma once

#include "velto/platform/ui/WKWebView.h"
#include "velto/ui/AdWatch.h"
#include "velto/ui/UIViewControllerWKWebViewSDKVelto.h"

#include <memory>
#include <optional>

namespace velto {

class AdPages {
 public:
  using WebView = std::shared_ptr<WKWebView>;

  const WebView& webView() const { return webView_; }
  // The second part while there is one, else the main page.
  WebView activeWebView() const {
    return UIViewControllerWKWebViewSDKVelto::getActiveWebView(webView_, secondaryMRAIDWebView_);
  }

  // What the main page costs. A person may see it from the time that it is in its place, and may touch it then.
  std::optional<VeltoAdWeight> weight() const { return watch_ ? watch_->weigh() : std::nullopt; }
  void isInPlace() const {
    if (watch_) watch_->lookAtSight();
  }
  // One part is as good as the other.
  void touched() const {
    for (const auto& watch : {watch_, secondWatch_})
      if (watch) watch->touched();
  }

 protected:
  AdPages() = default;
  ~AdPages() = default;
  bool wereTouched() const {
    for (const auto& page : {webView_, secondaryMRAIDWebView_})
      if (page && page->webPeer().use().touched) return true;
    return false;
  }
  void pauseUnseen() const {
    for (const auto& watch : {watch_, secondWatch_})
      if (watch) watch->pauseUnseen();
  }

  WebView webView_;
  WebView secondaryMRAIDWebView_;                 // of a two-part expand
  std::shared_ptr<AdWatch> watch_, secondWatch_;  // from their load on
};

}  // namespace velto
