// Device, screen, locale and time zone of the headless platform: plain facts that a test may change at any
// time. They begin as a phone's. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/Text.h"

#include <stdexcept>

namespace velto::headless {

struct DeviceFacts {
  std::string name = "Phone";
  std::string model = "iPhone";
  std::string systemName = "iOS";
  std::string systemVersion = "16.4";
  std::optional<std::string> machine = "iPhone12,1";  // nothing: reading it fails
  UIUserInterfaceIdiom idiom = UIUserInterfaceIdiom::Phone;
  UIDeviceOrientation orientation = 1;
  int64_t bootTime = 1'704'000'000;  // 2023-12-31T05:20:00Z; 0: it is not known
};

class VELTO_EXPORT ScriptedDevice : public UIDevice {
 public:
  DeviceFacts facts;

  std::string name() const override { return facts.name; }
  std::string model() const override { return facts.model; }
  std::string systemName() const override { return facts.systemName; }
  std::string systemVersion() const override { return facts.systemVersion; }
  std::string machine() const override {
    return facts.machine ? *facts.machine : throw std::runtime_error("the machine identifier cannot be read");
  }
  UIUserInterfaceIdiom userInterfaceIdiom() const override { return facts.idiom; }
  bool isCarried() const override { return true; }
  int64_t bootTime() const override { return facts.bootTime; }
  bool isSystemVersionAtLeast(int major) const override {
    return leadingInteger(facts.systemVersion) >= major;
  }
  UIDeviceOrientation orientation() const override { return facts.orientation; }
  void setOrientation(UIDeviceOrientation orientation) override { facts.orientation = orientation; }
};

class VELTO_EXPORT ScriptedScreen : public UIScreen {
 public:
  CGSize size{390, 844};  // points
  double pixelsPerPoint = 3;

  CGRect bounds() const override { return {{0, 0}, size}; }
  double scale() const override { return pixelsPerPoint; }
};

class VELTO_EXPORT ScriptedLocale : public NSLocale {
 public:
  std::string identifier = "en_US";
  std::vector<std::string> languages{"en-US"};

  std::string localeIdentifier() const override { return identifier; }
  std::vector<std::string> preferredLanguages() const override { return languages; }
};

class VELTO_EXPORT ScriptedTimeZone : public NSTimeZone {
 public:
  int seconds = 0;  // east of Greenwich

  int secondsFromGMT() const override { return seconds; }
};

}  // namespace velto::headless
