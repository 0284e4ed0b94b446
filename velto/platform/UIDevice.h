// Supplied by the platform: the device, its screen, the user's language and the time zone.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

enum class UIUserInterfaceIdiom { Phone = 0, Pad = 1 };

// Beside these: 5 face up, 6 face down.
using UIDeviceOrientation = int64_t;
inline constexpr UIDeviceOrientation UIDeviceOrientationUnknown = 0;
inline constexpr UIDeviceOrientation UIDeviceOrientationPortrait = 1;
inline constexpr UIDeviceOrientation UIDeviceOrientationPortraitUpsideDown = 2;
inline constexpr UIDeviceOrientation UIDeviceOrientationLandscapeLeft = 3;
inline constexpr UIDeviceOrientation UIDeviceOrientationLandscapeRight = 4;

// Values are asked afresh each time, from any thread unless stated.
class VELTO_EXPORT UIDevice {
 public:
  virtual ~UIDevice() = default;

  virtual std::string name() const = 0;           // given by the user; a host name on a desktop
  virtual std::string model() const = 0;          // product family
  virtual std::string systemName() const = 0;     // of the operating system
  virtual std::string systemVersion() const = 0;  // such as "16.4"
  // The hardware's machine identifier. May throw std::runtime_error when it cannot be read.
  virtual std::string machine() const = 0;
  virtual UIUserInterfaceIdiom userInterfaceIdiom() const = 0;
  // A phone or a tablet, rather than what stands on a desk.
  virtual bool isCarried() const = 0;
  // When the system was started, in whole seconds since 1970; 0 when that is not known.
  virtual int64_t bootTime() const = 0;

  // Whether the platform offers what the phone's system offers from this version on. A phone compares its
  // system version; a platform whose own version numbers mean something else answers for what it supports.
  virtual bool isSystemVersionAtLeast(int major) const = 0;

  // Main thread only.
  virtual UIDeviceOrientation orientation() const = 0;
  virtual void setOrientation(UIDeviceOrientation orientation) = 0;
};

class VELTO_EXPORT UIScreen {
 public:
  virtual ~UIScreen() = default;
  virtual CGRect bounds() const = 0;  // points
  virtual double scale() const = 0;   // pixels a point
};

class VELTO_EXPORT NSLocale {
 public:
  virtual ~NSLocale() = default;
  virtual std::string localeIdentifier() const = 0;                 // such as "de_DE"
  virtual std::vector<std::string> preferredLanguages() const = 0;  // BCP 47 tags, best first
};

class VELTO_EXPORT NSTimeZone {
 public:
  virtual ~NSTimeZone() = default;
  virtual int secondsFromGMT() const = 0;  // now, daylight saving included
};

}  // namespace velto
