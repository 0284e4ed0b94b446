// The seam: everything that the library asks of the system below it, in one
// object. A platform supplies it (velto::gtk, velto::headless, or a port of
// your own: docs/porting.md); the library reads it through Platform::current().
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSNotificationCenter.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <typeindex>
#include <unordered_map>
#include <vector>

namespace velto {

class ASIdentifierManager;
class ATTrackingManager;
class AVAudioSession;
class CLLocationManager;
class CTTelephonyNetworkInfo;
class Clock;
class Diagnostics;
class EKEventStore;
class MainQueue;
class MediaSystem;
class NSBundle;
class NSLocale;
class NSTimeZone;
class NSURLSession;
class NSUserDefaults;
class NetworkInformation;
class PHPhotoLibrary;
class UIApplication;
class UIDevice;
class UIScreen;
class ViewSystem;
class WKWebsiteDataStore;

// Posted by a platform that is about to go, on the main thread and while it is still the current one: what
// stands on a screen leaves it.
inline constexpr char notificationPlatformWillGo[] = "VeltoNotificationPlatformWillGo";

class VELTO_EXPORT Platform {
 public:
  // The installed platform. Throws std::logic_error when there is none. Any thread.
  static Platform& current();
  static Platform* currentOrNull();

  // Installs a platform (null: removes it). The library's singletons belong to the
  // platform they were made on and end with it, so a test that installs a fresh
  // one starts from nothing. Main thread, never inside a callback of the old one.
  static void install(std::shared_ptr<Platform> platform);

  Platform() = default;
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;
  virtual ~Platform() = default;

  // References stay valid and the same for the platform's life.
  virtual MainQueue& mainQueue() = 0;
  virtual Clock& clock() = 0;
  virtual NSUserDefaults& standardUserDefaults() = 0;
  virtual NSURLSession& urlSession() = 0;
  virtual NSBundle& mainBundle() = 0;
  // The bundle of that identifier in this process, or null.
  virtual std::shared_ptr<NSBundle> bundleWithIdentifier(const std::string& identifier) = 0;
  virtual UIApplication& application() = 0;
  virtual UIDevice& device() = 0;
  virtual UIScreen& mainScreen() = 0;
  virtual NSLocale& currentLocale() = 0;
  virtual NSTimeZone& localTimeZone() = 0;
  virtual NetworkInformation& network() = 0;
  virtual CTTelephonyNetworkInfo& telephony() = 0;
  virtual CLLocationManager& location() = 0;
  virtual ASIdentifierManager& identifierManager() = 0;
  virtual ATTrackingManager& trackingManager() = 0;
  virtual WKWebsiteDataStore& websiteDataStore() = 0;
  virtual ViewSystem& views() = 0;
  virtual EKEventStore& eventStore() = 0;
  virtual PHPhotoLibrary& photoLibrary() = 0;
  virtual MediaSystem& media() = 0;
  virtual AVAudioSession& audioSession() = 0;
  // Null: nothing is written for developers.
  virtual Diagnostics* diagnostics() { return nullptr; }

  // Runs work that would hold up the main queue on another thread, soon. Work still waiting when the platform
  // goes is destroyed undone; what is being done is waited for. Any thread.
  virtual void performInBackground(std::function<void()> work) = 0;

  // Shared by all platforms.
  NSNotificationCenter& notificationCenter() { return notificationCenter_; }

  // The one T of this platform, made on first use under a once-only guard. Any thread.
  template <class T>
  static std::shared_ptr<T> shared() {
    return std::static_pointer_cast<T>(
        current().singleton(typeid(T), [] { return std::static_pointer_cast<void>(std::make_shared<T>()); }));
  }

 private:
  using Maker = std::shared_ptr<void> (*)();
  std::shared_ptr<void> singleton(std::type_index type, Maker make);
  void dropSingletons();

  NSNotificationCenter notificationCenter_;
  std::recursive_mutex singletonMutex_;
  std::unordered_map<std::type_index, std::shared_ptr<void>> singletons_;
  std::vector<std::type_index> singletonOrder_;
};

}  // namespace velto
