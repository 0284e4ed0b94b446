// A window of the host application on the headless platform: give its controller as the delegate's
// presentViewController, and touch it as a person would. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/headless/web/RecordingWebView.h"
#include "velto/platform/ui/UIViewController.h"

#include <memory>
#include <string>

namespace velto::headless {

class VELTO_EXPORT HostWindow {
 public:
  // Shown at once. The safe area of a phone with a notch would be {47, 0, 34, 0}.
  explicit HostWindow(CGSize size = {390, 844}, UIEdgeInsets safeAreaInsets = {});
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;
  ~HostWindow();

  const std::shared_ptr<UIViewController>& controller() const { return controller_; }
  UIView& view() const { return *controller_->view(); }

  void show();
  void hide();
  void resize(CGSize size);
  void setSafeAreaInsets(UIEdgeInsets insets);
  // Minimised, unfocused, partly off the screen or painted over, for what is measured of the ads in it.
  void setSight(WindowSight sight);

  // A touch that comes and goes at a point of the window. A control under the
  // point takes it; otherwise every view there that waits for taps is told,
  // innermost first. Outside the window, or while it is hidden, nothing happens.
  void tap(CGPoint point);

  // Escape on a keyboard: goes to the topmost modal view,
  // such as a shown interstitial. Whether there was one.
  bool pressEscape();
  // Another key: goes there too, unless the page takes it. Whether it meant something.
  bool pressKey(UIKey key);

  // A tap in the middle of a web view, where the page has a link to that URL: the tap, then the
  // navigation, unless the tap took the view away. Returns what the engine was told to do with the navigation
  // (cancel for a view that went).
  WKNavigationActionPolicy tapLink(RecordingWebView& webView, const std::string& url);

 private:
  UIView* topmostModal() const;

  std::shared_ptr<UIViewController> controller_;
};

}  // namespace velto::headless
