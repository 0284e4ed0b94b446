// The Linux platform: each service of the seam by the system's own means. velto::gtk::install() makes it.
#pragma once

#include "velto/gtk/Background.h"
#include "velto/gtk/Clock.h"
#include "velto/gtk/MainQueue.h"
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/media/AudioSession.h"
#include "velto/gtk/media/Photos.h"
#include "velto/gtk/media/VideoPlayer.h"
#include "velto/gtk/network/NetworkGate.h"
#include "velto/gtk/network/NetworkInfo.h"
#include "velto/gtk/network/UrlSession.h"
#include "velto/gtk/services/Application.h"
#include "velto/gtk/services/Bundle.h"
#include "velto/gtk/services/Calendar.h"
#include "velto/gtk/services/Carrier.h"
#include "velto/gtk/services/DeveloperOutput.h"
#include "velto/gtk/services/Device.h"
#include "velto/gtk/services/Foreground.h"
#include "velto/gtk/services/Locale.h"
#include "velto/gtk/services/Location.h"
#include "velto/gtk/services/OrientationSensor.h"
#include "velto/gtk/services/SessionLock.h"
#include "velto/gtk/services/SystemBus.h"
#include "velto/gtk/store/Advertising.h"
#include "velto/gtk/store/DefaultsStore.h"
#include "velto/gtk/views/Rotation.h"
#include "velto/gtk/web/WebSession.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"
#include "velto/platform/WKWebsiteDataStore.h"

#include <memory>

namespace velto::gtk {

// Made and destroyed on the main thread. Making it is cheap: what costs starts with its first use (file,
// transport thread, web engine), or on a thread of its own (services of the system bus).
class GtkPlatform : public Platform {
 public:
  explicit GtkPlatform(const Options& options);
  ~GtkPlatform() override;

  // The one installed, or null.
  static GtkPlatform* installed();
  Foreground& foreground() { return foreground_; }
  const Rotation& rotation() const { return rotation_; }
  SystemBus& systemBus() { return systemBus_; }

  // Ends what runs on other threads. To be called while this
  // platform is still the current one: they ask for it.
  void stopThreads();

  GLibMainQueue& mainQueue() override { return mainQueue_; }
  Clock& clock() override { return clock_; }
  NSUserDefaults& standardUserDefaults() override { return defaults_; }
  NSURLSession& urlSession() override { return urlSession_; }
  NSBundle& mainBundle() override { return mainBundle_; }
  std::shared_ptr<NSBundle> bundleWithIdentifier(const std::string& identifier) override;
  Application& application() override { return application_; }
  Device& device() override { return device_; }
  Screen& mainScreen() override { return screen_; }
  NSLocale& currentLocale() override { return locale_; }
  NSTimeZone& localTimeZone() override { return timeZone_; }
  NetworkInformation& network() override { return network_; }
  CTTelephonyNetworkInfo& telephony() override { return carrier_; }
  CLLocationManager& location() override { return location_; }
  ASIdentifierManager& identifierManager() override { return advertising_; }
  ATTrackingManager& trackingManager() override { return advertising_; }
  WKWebsiteDataStore& websiteDataStore() override;
  ViewSystem& views() override;
  Calendar& eventStore() override { return calendar_; }
  Photos& photoLibrary() override { return photos_; }
  Media& media() override { return media_; }
  AudioSession& audioSession() override { return audioSession_; }
  DeveloperOutput* diagnostics() override { return &developerOutput_; }
  void performInBackground(std::function<void()> work) override { background_.perform(std::move(work)); }

 private:
  GLibMainQueue mainQueue_;  // goes last: the others post to it
  SystemClock clock_;
  DefaultsStore defaults_;
  ApplicationBundle mainBundle_;
  std::shared_ptr<LibraryBundle> libraryBundle_ = std::make_shared<LibraryBundle>();
  Application application_;
  Foreground foreground_{notificationCenter()};
  Rotation rotation_{notificationCenter()};
  Screen screen_;
  Device device_;
  Locale locale_;
  TimeZone timeZone_;
  NetworkInfo network_{mainQueue_, [this] { urlSession_.networkChanged(); }};
  Carrier carrier_;
  Location location_;
  OrientationSensor orientationSensor_;
  SessionLock sessionLock_;
  DeveloperOutput developerOutput_;
  Advertising advertising_;
  Calendar calendar_;
  Background background_;
  Photos photos_;
  std::shared_ptr<NetworkGate> gate_;
  std::shared_ptr<WebSession> webSession_;
  std::unique_ptr<WKWebsiteDataStore> websiteDataStore_;
  std::unique_ptr<ViewSystem> views_;
  Media media_;
  AudioSession audioSession_{mainQueue_};
  UrlSession urlSession_;
  SystemBus systemBus_{{&network_, &carrier_, &location_, &orientationSensor_, &sessionLock_}};
};

}  // namespace velto::gtk
