// The headless platform: every service in memory and scriptable, virtual time, no display, no network, no
// files. See VeltoHeadless.h for how to test with it. All accessors return the scriptable classes themselves.
#pragma once

#include "velto/Export.h"
#include "velto/headless/VirtualQueue.h"
#include "velto/headless/media/ScriptedAudioSession.h"
#include "velto/headless/media/ScriptedMedia.h"
#include "velto/headless/network/ScriptedNetwork.h"
#include "velto/headless/network/ScriptedURLSession.h"
#include "velto/headless/services/MemoryLibrary.h"
#include "velto/headless/services/RecordingDiagnostics.h"
#include "velto/headless/services/ScriptedApplication.h"
#include "velto/headless/services/ScriptedDevice.h"
#include "velto/headless/store/MemoryBundle.h"
#include "velto/headless/store/MemoryDefaults.h"
#include "velto/headless/views/ScriptedViewSystem.h"
#include "velto/headless/web/MemoryWebsiteData.h"
#include "velto/platform/Platform.h"

#include <atomic>

namespace velto::headless {

class VELTO_EXPORT Platform : public velto::Platform {
 public:
  // Installs a fresh platform in place of any other; the calling thread is its main thread. A store kept from
  // an earlier one plays a relaunch of the application.
  static std::shared_ptr<Platform> install(std::shared_ptr<MemoryDefaults> defaults = nullptr);
  // Ends everything the library does. What is shown leaves the screen, and banners and interstitials that
  // still exist do nothing from here on.
  static void uninstall();
  ~Platform() override;

  // Shortcuts to what tests use most.
  void runUntilIdle() { queue_->runUntilIdle(); }
  void advance(std::chrono::nanoseconds duration) { queue_->advance(duration); }
  const std::vector<RecordingWebView*>& webViews() const { return views_.webViews(); }
  void setPagesFinishByThemselves(bool finish) { views_.setPagesFinishByThemselves(finish); }
  std::shared_ptr<MemoryDefaults> defaults() const { return defaults_; }

  VirtualQueue& mainQueue() override { return *queue_; }
  VirtualQueue& clock() override { return *queue_; }
  MemoryDefaults& standardUserDefaults() override { return *defaults_; }
  ScriptedURLSession& urlSession() override { return session_; }
  MemoryBundle& mainBundle() override { return *mainBundle_; }  // "org.example.host", named "Host"
  // The library's own bundle, version "4.0.10"; others are what addBundle made known.
  std::shared_ptr<NSBundle> bundleWithIdentifier(const std::string& identifier) override;
  void addBundle(std::shared_ptr<MemoryBundle> bundle) { bundles_.push_back(std::move(bundle)); }
  MemoryBundle& veltoBundle() { return *veltoBundle_; }
  ScriptedApplication& application() override { return application_; }
  ScriptedDevice& device() override { return device_; }
  ScriptedScreen& mainScreen() override { return screen_; }
  ScriptedLocale& currentLocale() override { return locale_; }
  ScriptedTimeZone& localTimeZone() override { return timeZone_; }
  ScriptedNetwork& network() override { return network_; }
  ScriptedTelephony& telephony() override { return telephony_; }
  ScriptedLocation& location() override { return location_; }
  ScriptedAdvertising& identifierManager() override { return advertising_; }
  ScriptedAdvertising& trackingManager() override { return advertising_; }
  MemoryWebsiteData& websiteDataStore() override { return websiteData_; }
  ScriptedViewSystem& views() override { return views_; }
  MemoryEventStore& eventStore() override { return eventStore_; }
  MemoryPhotoLibrary& photoLibrary() override { return photoLibrary_; }
  ScriptedMedia& media() override { return media_; }
  ScriptedAudioSession& audioSession() override { return audioSession_; }
  RecordingDiagnostics* diagnostics() override { return &diagnostics_; }
  void performInBackground(std::function<void()> work) override {
    ++backgroundWork_;
    queue_->postOffMain({}, std::move(work));
  }
  // How often something was asked to be done in the background.
  size_t backgroundWork() const { return backgroundWork_; }

 private:
  explicit Platform(std::shared_ptr<MemoryDefaults> defaults);

  // Peers share the queue: they may outlive the platform.
  std::shared_ptr<VirtualQueue> queue_ = std::make_shared<VirtualQueue>();
  std::shared_ptr<MemoryDefaults> defaults_;
  std::shared_ptr<MemoryBundle> mainBundle_ = std::make_shared<MemoryBundle>();
  std::shared_ptr<MemoryBundle> veltoBundle_ = std::make_shared<MemoryBundle>();
  std::vector<std::shared_ptr<MemoryBundle>> bundles_;
  RecordingDiagnostics diagnostics_;
  ScriptedDevice device_;
  ScriptedScreen screen_;
  ScriptedLocale locale_;
  ScriptedTimeZone timeZone_;
  ScriptedTelephony telephony_;
  ScriptedLocation location_;
  ScriptedAdvertising advertising_;
  ScriptedNetwork network_{queue_};
  ScriptedApplication application_{queue_};
  MemoryWebsiteData websiteData_{queue_};
  MemoryEventStore eventStore_{queue_};
  MemoryPhotoLibrary photoLibrary_{queue_};
  ScriptedURLSession session_{queue_};
  ScriptedViewSystem views_{queue_};
  ScriptedMedia media_{queue_};
  ScriptedAudioSession audioSession_{queue_};
  std::atomic<size_t> backgroundWork_ = 0;
};

}  // namespace velto::headless
