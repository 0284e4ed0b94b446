// Whether a person can see the application. Told by the host windows
// (HostWindow) or by the application itself (VeltoGtk.h); tells the library,
// which has no business to do for an application out of sight. Main thread.
#pragma once

#include "velto/platform/NSNotificationCenter.h"
#include "velto/platform/UIApplication.h"

#include <optional>

namespace velto::gtk {

class Foreground {
 public:
  // In the foreground until told otherwise: an application may have its first window yet to show.
  explicit Foreground(NSNotificationCenter& center) : center_(center) {}

  // Whether at least one host window is on the screen.
  void setWindowsVisible(bool visible) {
    windowsVisible_ = visible;
    tell();
  }
  // What the application says counts more than its windows. Nothing: the windows count again.
  void setByApplication(std::optional<bool> inForeground) {
    byApplication_ = inForeground;
    tell();
  }

 private:
  void tell() {
    const bool inForeground = byApplication_.value_or(windowsVisible_);
    if (inForeground == told_) return;
    told_ = inForeground;
    center_.postNotification({inForeground ? UIApplicationWillEnterForegroundNotification
                                           : UIApplicationDidEnterBackgroundNotification,
                              {}});
  }

  NSNotificationCenter& center_;
  std::optional<bool> byApplication_;
  bool windowsVisible_ = true;
  bool told_ = true;
};

}  // namespace velto::gtk
