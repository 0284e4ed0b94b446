// What the next web view of a controller would wait for (a web process, mostly), brought up while the request
// for its ad is on its way. Held by value by the working controllers; main thread.
#pragma once

#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"
#include "velto/platform/ui/WKWebView.h"

#include <memory>
#include <utility>

namespace velto {

class PreparedPage {
 public:
  // `replacing` is the web view that the next one takes the place of and may share a process with, or null.
  void prepare(const std::shared_ptr<WKWebView>& replacing, WebContentUse use = WebContentUse::AtOnce) {
    replacing_ = replacing;
    if (!content_) content_ = Platform::current().views().prepareWebContent(replacing.get(), use);
  }
  // No web view will be made: nothing is kept for it.
  void drop() {
    content_.reset();
    replacing_.reset();
  }
  // The next web view uses it up.
  void moveInto(WKWebViewConfiguration& configuration) {
    configuration.preparedContent = std::move(content_);
    configuration.relatedWebView = std::exchange(replacing_, {});
  }

 private:
  std::shared_ptr<PreparedWebContent> content_;
  std::weak_ptr<WKWebView> replacing_;
};

}  // namespace velto
