// Supplied by the platform: the web engine behind a web view. As with all peers (ViewPeer.h), everything here is
// called on the main thread and calls back on it.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"
#include "velto/platform/NSError.h"
#include "velto/platform/ViewPeer.h"
#include "velto/platform/WebPageUse.h"
#include "velto/platform/foundation/JSON.h"
#include "velto/platform/foundation/NSURL.h"

#include <functional>
#include <optional>
#include <string>

namespace velto {

struct WKUserScript;

struct ScrollBehavior {
  bool bounces = true;
  bool scrollEnabled = true;
  int contentInsetAdjustmentBehavior = 0;  // 2 never
};

// A web view. Reports navigations to WKWebView::peer…(), in the order in which the engine meets them.
class VELTO_EXPORT WebViewPeer : public virtual ViewPeer {
 public:
  // Replaces the page. Without base URL the document has an origin of its own. Ends with
  // peerDidFinishNavigation or peerDidFailNavigation, unless another load comes first.
  virtual void loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) = 0;

  // A page may also send addresses, one a line, as a message to window.webkit.messageHandlers.veltoNavigation, where the
  // platform offers that: each is reported like a navigation that a script began.

  // One more script for the documents that are loaded from now on, once in each.
  virtual void addUserScript(const WKUserScript& script) = 0;

  // Runs a statement in the main frame's page world. Statements run in the order of the calls. The completion
  // (may be empty) gets the value, or an error when the script threw, was no script, or the page went away.
  // Must not lend the page a user gesture that it could act on.
  virtual void evaluateJavaScript(
      const std::string& script,
      std::function<void(std::optional<JSON>, std::optional<NSError>)> completion) = 0;

  // All sound of the page, whatever makes it. The page is not told.
  virtual void setMuted(bool muted) = 0;
  virtual void setScrollBehavior(const ScrollBehavior& behavior) = 0;
  // Whether the process that it was made for was up, or coming, before.
  virtual bool hasWarmProcess() const { return false; }

  // What its page has cost by now.
  virtual WebPageUse use() const { return {}; }
  // Calls back once, in a turn of its own: when the page's process has used that much more processor time, something
  // more has come for the page, or it has got another process. Until then nothing may run for it: an ad that rests
  // lets the application rest. Where the platform cannot tell, it never calls.
  virtual Handle afterUse(double /*processorSeconds*/, std::function<void()> /*then*/) { return {}; }
  // Whether anybody can see something of it; true at first. While not, the engine holds the page back as one that is
  // hidden, and tells it so. May be put off as long as the view has the keyboard.
  virtual void setInSight(bool /*inSight*/) {}
  bool paintsContent() const override { return true; }
};

}  // namespace velto
