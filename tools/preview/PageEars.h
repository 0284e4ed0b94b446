// What a page does, heard from the page itself by the engine's message handlers: its console, errors of scripts and
// resources, refusals, dialogs, also in its frames. No content policy closes that way, and no page takes it away, since
// what listens is there before the page's first script. Main thread.
#pragma once

#include <velto/platform/foundation/JSON.h>
#include <velto/platform/ui/WKWebView.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velto::preview {

class PageEars {
 public:
  using Heard = std::function<void(const std::string& kind, JSON::Object details)>;

  // Nothing is heard any more once this is gone.
  explicit PageEars(Heard heard) : heard_(std::make_shared<Heard>(std::move(heard))) {}

  // One more script for the page's own world, before all others.
  void putFirst(std::string script) { first_.push_back(std::move(script)); }
  // For what the view loads from now on; once for each view.
  void listenTo(WKWebView& webView) const;

 private:
  std::shared_ptr<Heard> heard_;
  std::vector<std::string> first_;
};

}  // namespace velto::preview
