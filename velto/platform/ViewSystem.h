// Supplied by the platform: makes the peers of views, and tells of the frames that the display shows. One for the
// platform; main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"
#include "velto/platform/ViewPeer.h"
#include "velto/platform/WebViewPeer.h"

#include <functional>
#include <memory>

namespace velto {

class WKWebView;
struct WKWebViewConfiguration;

// A web process held ready for the next web view: destroying it lets the process go, unless a view took it over.
class VELTO_EXPORT PreparedWebContent {
 public:
  virtual ~PreparedWebContent() = default;
};

class VELTO_EXPORT ViewSystem {
 public:
  virtual ~ViewSystem() = default;

  virtual std::unique_ptr<ViewPeer> makeView() = 0;
  virtual std::unique_ptr<ButtonPeer> makeButton() = 0;
  // The configuration may name prepared content to use and a web view whose process to share; both are wishes.
  virtual std::unique_ptr<WebViewPeer> makeWebView(const WKWebViewConfiguration& configuration) = 0;

  // Starts what the first load of a web view would otherwise wait for, in the background; null where nothing
  // is to be gained, also when a view made now could share the process of `replacing` (may be null).
  virtual std::shared_ptr<PreparedWebContent> prepareWebContent(WKWebView* replacing) = 0;

  // An ad will probably be asked for: what the first web view of the process waits for may be brought up when that
  // disturbs nothing. May do nothing; calls after the first, or after a web view was made, do nothing.
  virtual void expectWebContent() {}

  // Calls back once for every frame that the display shows, with monotonic seconds, until the handle goes.
  virtual Handle displayLink(std::function<void(double seconds)> tick) = 0;
};

}  // namespace velto
