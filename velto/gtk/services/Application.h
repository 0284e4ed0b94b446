// Opening of URLs by the desktop's other applications,
// and the user's wishes about the interface. Main thread.
#pragma once

#include "velto/gtk/Signal.h"
#include "velto/gtk/services/UriPortal.h"
#include "velto/gtk/web/TouchGuard.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/NSNotificationCenter.h"
#include "velto/platform/UIApplication.h"

#include <gio/gio.h>

#include <memory>
#include <unordered_map>

namespace velto::gtk {

class Application : public UIApplication {
 public:
  // `refused` (may be empty) is called with each address that
  // was not opened for a page because nobody had touched it.
  Application(MainQueue& mainQueue, bool opensOnlyAfterTouch, std::chrono::milliseconds leastTimeUnderTouch,
              std::function<void(const std::string& address)> refused);
  TouchGuard& touchGuard() { return touchGuard_; }

  // By the applications known for the URL's scheme, inside a sandbox also by what the desktop's portal says.
  // Never for "file": an ad has no business with the user's files.
  bool canOpenURL(const NSURL& url) const override;

  // Not for a page that nobody has touched. Through the portal inside a sandbox. No options are known. The
  // application is told from where it was activated, so that its window may come to the front.
  void openURL(const NSURL& url, const std::map<std::string, std::string>& options,
               std::function<void(bool opened)> completion) override;

  bool mayActForPage() const override { return touchGuard_.mayOpen(); }

  bool isProtectedDataAvailable() const override { return !locked_; }
  // By the session's lock; tells the library.
  void setLocked(bool locked, NSNotificationCenter& center);

  // High contrast is what a desktop offers to people who cannot read on translucent surfaces.
  bool isReduceTransparencyEnabled() const override;
  bool isReduceMotionEnabled() const override;
  double textScale() const override;
  std::string translated(const std::string& text) const override;

  void attemptRotationToDeviceOrientation() override;

 private:
  bool locked_ = false;
  static void onApplicationsChanged(GAppInfoMonitor*, gpointer application) noexcept;

  MainQueue& mainQueue_;
  TouchGuard touchGuard_;
  std::function<void(const std::string&)> refused_;
  // What still waits for an answer looks whether anybody wants it.
  std::shared_ptr<int> alive_ = std::make_shared<int>();
  mutable std::unordered_map<std::string, bool> openable_;  // by scheme; asked in every navigation
  mutable UriPortal portal_;
  GPtr<GAppInfoMonitor> monitor_;
  Signal applicationsChanged_;
  mutable GPtr<GSettings> accessibility_;
};

}  // namespace velto::gtk
