// Answers every question about the device that requests, pages and tracks ask. Stateless: each call asks the
// platform afresh. Any thread.
#pragma once

#include "velto/network/VeltoReachability.h"
#include "velto/platform/Geometry.h"
#include "velto/platform/Network.h"

#include <map>
#include <optional>
#include <string>

namespace velto {

class VeltoDevice {
 public:
  static std::string name();              // given by the user
  static std::string model();             // hardware identifier; empty when it cannot be read
  static std::string modelProductName();  // product family
  static std::string manufacturerName();
  static std::string os();
  static std::string systemVersion();
  static CGSize screenSize();   // points
  static double screenScale();  // pixels a point
  static std::string locale();
  static std::optional<std::string> language();  // the user's first
  static std::optional<std::string> ip();        // of the local network, else of the mobile one
  // "interface/ipv4" or "interface/ipv6" → address.
  static std::map<std::string, std::string> _getIPAddresses();

  static std::string connection();                     // "WIFI" or "CARRIER"
  static std::optional<std::string> connectionType();  // "WIFI", "2G", "3G", "4G"
  static std::optional<std::string> _connectionTypeFor(VeltoNetworkStatus status);
  static VeltoNetworkStatus _networkStatus();

  static std::optional<std::string> simOperatorCode();  // "country-network"
  static std::optional<std::string> simOperatorName();
  static std::optional<std::string> mobileCountryCode();
  static std::optional<std::string> mobileNetworkCode();
  static std::optional<CTCarrier> _currentCurrier();

  // The last location that the host application obtained; never asked for here.
  static bool isLocationServiceEnabled();
  static std::optional<double> locationLatitude();   // degrees
  static std::optional<double> locationLongitude();  // degrees
  static std::optional<double> locationAccuracy();   // metres
  static std::optional<double> locationTimestampInSeconds();
  static std::optional<double> locationTimestampInMilliseconds();
};

}  // namespace velto
