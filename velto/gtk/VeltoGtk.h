// Velto on Linux: install the platform once, give an ad a place, create a banner. Everything here is called
// on the thread that runs the application's GLib main context, after gtk_init (or inside GtkApplication's
// "activate").
//
//   velto::gtk::install({.applicationIdentifier = "org.example.player"});
//   velto::VeltoFramework::addVeltoKey("your-key");
//   auto controller = velto::gtk::hostViewController(velto::gtk::adSlot());
//
// The library uses a web session of its own: the application's web views, cookies and caches are never
// touched, nor is its main loop: the library only adds sources to the default main context.
#pragma once

#include "velto/Export.h"
#include "velto/gtk/Slot.h"
#include "velto/gtk/WidgetView.h"
#include "velto/platform/Geometry.h"

#include <gtk/gtk.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {
class UIView;
class UIViewController;
}  // namespace velto

namespace velto::gtk {

// Sends connections for a host name somewhere else, for test servers; names
// and certificates are still checked as written. `host` may begin with "*."
// for all names below a domain; `address` is "127.0.0.1:8443" or "[::1]:8443".
struct HostMapping {
  std::string host;
  std::string address;
};

struct Options {
  // Reverse-domain name, such as "org.example.player". Required: the store and requests carry it.
  std::string applicationIdentifier;
  // What people call the application; empty: the GLib application name, else the identifier's last part.
  std::string applicationName = {};
  // Where the store lives; empty: a folder of that identifier
  // in the user's data folder. Made if absent (mode 0700).
  // In one that other users can write to nothing is kept.
  std::filesystem::path dataFolder = {};
  // A file of certificate authorities (PEM) to trust instead of the system's, for test servers.
  std::filesystem::path caFile = {};
  std::vector<HostMapping> hostMap = {};
  // A request fails when no data comes for this long, as a phone's URL session has it, and after ten minutes (or this
  // long, if that is more) however much comes. A server that floods over HTTP/2 may hold it beyond that: until the next
  // request, or the platform's end.
  std::chrono::seconds requestTimeout{60};
  // An ad may open an address outside the application, such as its shop, and store pictures and events only
  // within two seconds after a person touched that ad. Each address not opened so is told (may be empty).
  bool opensOnlyAfterTouch = true;
  std::function<void(const std::string& address)> refusedToOpen = {};
  // And such a touch counts only where the ad has been under it for this long: not where it was shown, expanded or
  // moved while the finger was on its way.
  std::chrono::milliseconds leastTimeUnderTouch{300};
  // Whether ads may connect to this machine and to the network around it, such as an ad server of the house: loopback,
  // private and link-local addresses, whatever name leads there. What `hostMap` names is reached in any case.
  bool mayReachLocalNetwork = false;
  // What setCalendarAccess() and setPicturesAccess() say below, from the start: allowed, or not determined.
  bool mayAddCalendarEvents = false;
  bool mayStorePictures = false;
};

// Throws std::invalid_argument without an identifier. A second call replaces the platform: only for tests.
VELTO_EXPORT void install(Options options);
// Ends everything the library does in this process. What is shown leaves the screen, and banners and
// interstitials that still exist do nothing from here on. Main thread.
VELTO_EXPORT void uninstall();

// The view controller that stands for a slot, or for a window: give it as the delegate's
// presentViewController. With a slot's, banners stand in the slot; with a window's, they float over its
// content. Screens cover all of the window. One for each, kept until that is destroyed. Between a window and
// its content the library puts a GtkOverlay, once, whatever the content is later; that of AdwWindow and
// AdwApplicationWindow is their "content", of others their "child". Throws std::invalid_argument for a window
// that cannot be wrapped, which stays as it is, and for other widgets.
VELTO_EXPORT std::shared_ptr<UIViewController> hostViewController(GtkWindow* window);
VELTO_EXPORT std::shared_ptr<UIViewController> hostViewController(GtkWidget* slotOrWindow);

// The view of a slot; or one that follows any widget of a wrapped window in place, size and visibility, and
// is clipped with it. Such a view floats over all of the window's content: what the application shows above
// the widget comes to lie under the ad, and scrolling lags a frame behind. So prefer a slot, and take this
// where the widget is not yours to change. One for each widget, kept until it is destroyed. Throws
// std::invalid_argument when the widget is in no window with a host view controller.
VELTO_EXPORT std::shared_ptr<UIView> hostView(GtkWidget* widget);

// The screen that the library tells of, in points, instead of the monitor: for an application that has a part
// of a large display for itself. Nothing: the monitor again. Main thread.
VELTO_EXPORT void setScreenSize(std::optional<CGSize> points);

// Whether a person uses the application now. The library takes it from the windows with a host view
// controller: when all of them are hidden, minimised or destroyed, it sends nothing that can wait. An
// application that knows better (it plays on in the background, or its ads are one window of many) says so
// here; nothing: the windows count again. Main thread.
VELTO_EXPORT void setInForeground(std::optional<bool> inForeground);

// Whether ads may add events to the user's calendar, and pictures to the user's pictures folder. The
// application asks the user, keeps the answer, and tells it after each install(); the library never asks. The
// numbers are the platform's. Main thread.
enum class Access { NotDetermined = 0, Denied = 2, Allowed = 3 };
VELTO_EXPORT void setCalendarAccess(Access access);
VELTO_EXPORT void setPicturesAccess(Access access);

// Whether this user lets applications be told apart for advertisers by an identifier, which is made when the
// answer is yes and forgotten when it is no. It holds for all applications of the user, at once, and nobody
// is tracked before the user was asked: by the application's own consent screen through these two, or by the
// command velto-adid. Any thread, also without the platform. Setting throws std::runtime_error when the
// user's configuration folder cannot be written.
VELTO_EXPORT bool isTrackingAllowed();
VELTO_EXPORT void setTrackingAllowed(bool allowed);

}  // namespace velto::gtk
