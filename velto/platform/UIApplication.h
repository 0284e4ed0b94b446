// Supplied by the platform: the host application as the desktop sees it.
#pragma once

#include "velto/Export.h"
#include "velto/platform/foundation/NSURL.h"

#include <functional>
#include <map>
#include <string>

namespace velto {

// Posted by the platform on the main thread when the last of the application's windows goes out of sight, and
// when one comes back. An application that has shown no window yet counts as in the foreground.
inline constexpr char UIApplicationWillEnterForegroundNotification[] =
    "UIApplicationWillEnterForegroundNotification";
inline constexpr char UIApplicationDidEnterBackgroundNotification[] =
    "UIApplicationDidEnterBackgroundNotification";

// Posted likewise when a person locks the device, after which nobody sees what is on its screen, and unlocks it.
inline constexpr char UIApplicationProtectedDataWillBecomeUnavailable[] =
    "UIApplicationProtectedDataWillBecomeUnavailable";
inline constexpr char UIApplicationProtectedDataDidBecomeAvailable[] =
    "UIApplicationProtectedDataDidBecomeAvailable";

// Main thread.
class VELTO_EXPORT UIApplication {
 public:
  virtual ~UIApplication() = default;

  // Whether some application on this device opens such URLs.
  virtual bool canOpenURL(const NSURL& url) const = 0;

  // Hands the URL to that application. The completion (may be empty) is called later on the main thread.
  virtual void openURL(const NSURL& url, const std::map<std::string, std::string>& options,
                       std::function<void(bool opened)> completion) = 0;
  // The same in its older form.
  void openURL(const NSURL& url) { openURL(url, {}, nullptr); }

  // Whether what is done right now may leave something behind for a person: not while it is done for a page that nobody
  // has touched.
  virtual bool mayActForPage() const { return true; }

  // Whether the device is unlocked, as far as the platform can tell.
  virtual bool isProtectedDataAvailable() const { return true; }

  virtual bool isReduceTransparencyEnabled() const = 0;
  // By how much larger than usual people have letters; that of what is painted is the platform's own matter.
  virtual double textScale() const { return 1; }
  // What moves is at its end at once.
  virtual bool isReduceMotionEnabled() const { return false; }

  // One of the library's own words (po/) in the user's language; the text itself where there is no translation. For texts that
  // are put together: the titles of buttons are translated where they are shown.
  virtual std::string translated(const std::string& text) const { return text; }

  // Turns the interface to the device's orientation where the shown view controllers allow it.
  virtual void attemptRotationToDeviceOrientation() = 0;
};

}  // namespace velto
