// Supplied by the platform: makes the peers of views, and tells of the frames that the display shows. One for the
// platform; main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"
#include "velto/platform/NSError.h"
#include "velto/platform/ViewPeer.h"
#include "velto/platform/WebViewPeer.h"

#include <functional>
#include <memory>
#include <optional>

namespace velto {

class WKWebView;
struct WKWebViewConfiguration;

// A web process held ready for the next web view: destroying it lets the process go, unless a view took it over.
class VELTO_EXPORT PreparedWebContent {
 public:
  virtual ~PreparedWebContent() = default;
};

// When the page comes that content is prepared for: as soon as the ad is there; the same, and it may live with pages of other
// places; or when the application shows it.
enum class WebContentUse { AtOnce, Together, Later };

class VELTO_EXPORT ViewSystem {
 public:
  virtual ~ViewSystem() = default;

  virtual std::unique_ptr<ViewPeer> makeView() = 0;
  virtual std::unique_ptr<ButtonPeer> makeButton() = 0;
  // The configuration may name prepared content to use, a web view whose process to share, and the site that its page
  // belongs to; all are wishes.
  virtual std::unique_ptr<WebViewPeer> makeWebView(const WKWebViewConfiguration& configuration) = 0;

  // Starts what the first load of a web view would otherwise wait for, in the background; null where nothing
  // is to be gained, also when a view made now could share the process of `replacing` (may be null). Who asks for content
  // that pages are to use together may be given what another has, too: the first view takes it over.
  // What is used later must not keep the main thread from anything else.
  virtual std::shared_ptr<PreparedWebContent> prepareWebContent(WKWebView* replacing, WebContentUse use) = 0;

  // An ad will probably be asked for: what the first web view of the process waits for may be brought up when that
  // disturbs nothing. `meanwhile` is called at that moment, and the handle that it returns goes with what was brought up,
  // when that is taken or given back. May do nothing; calls after the first, or after a web view was made, do nothing.
  virtual void expectWebContent(std::function<Handle()> /*meanwhile*/) {}

  // Why no page can be shown here, now or later; nothing where they can. The first answer may take some milliseconds.
  // Web views can be made all the same; each of their loads fails.
  virtual std::optional<NSError> webContentFailure() { return std::nullopt; }

  // Calls back once for every frame that the display shows, with monotonic seconds, until the handle goes.
  virtual Handle displayLink(std::function<void(double seconds)> tick) = 0;
};

}  // namespace velto
