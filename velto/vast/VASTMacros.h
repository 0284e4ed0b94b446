// The macros that stand in the addresses of video ads, and what is put in their places (VAST 4.2, 6). A value; any thread.
//
//   velto::VASTMacros macros;
//   macros.set(velto::VASTMacro::GDPRConsent, consent).refuse(velto::VASTMacro::IFA);
//   macros.expanded("https://t.example/?c=[GDPRCONSENT]&r=[CACHEBUSTING]");
//
// Values are percent-encoded as they are put in. A macro of the standard that has no value becomes -1 (not known), one that
// is refused -2 (known, and not told); one that the standard does not know stays as it is.
#pragma once

#include "velto/Export.h"
#include "velto/vast/VASTAd.h"
#include "velto/vast/VASTError.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

// In the order of the table in VASTMacros.cpp, which has the names.
enum class VASTMacro : uint8_t {
  AdCategories,
  AdCount,
  AdPlayhead,
  AdServingId,
  AdType,
  APIFrameworks,
  AppBundle,
  AssetURI,
  BlockedAdCategories,
  BreakMaxAdLength,
  BreakMaxAds,
  BreakMaxDuration,
  BreakMinAdLength,
  BreakMinDuration,
  BreakPosition,
  CacheBusting,  // by itself: eight random digits
  ClickPos,
  ClickType,
  ClientUA,
  ContentId,
  ContentPlayhead,  // the older name of MediaPlayhead; without a value of its own it has that one's
  ContentURI,
  DeviceIP,
  DeviceUA,
  Domain,
  ErrorCode,
  Extensions,
  GDPRConsent,
  IFA,
  IFAType,
  InventoryState,
  LatLong,
  LimitAdTracking,
  MediaMIME,
  MediaPlayhead,
  OMIDPartner,
  PageURL,
  PlacementType,
  PlayerCapabilities,
  PlayerSize,
  PlayerState,
  PodSequence,
  Reason,
  Regulations,
  ServerSide,
  ServerUA,
  Timestamp,  // by itself: of the platform's clock, which is UTC (ISO 8601)
  TransactionId,
  UniversalAdId,
  VASTVersions,
  VerificationVendors,
};

// As macros write it: "[authority]code".
VELTO_EXPORT std::string vastCategoryText(const VASTCategory& category);

class VELTO_EXPORT VASTMacros {
 public:
  VASTMacros& set(VASTMacro macro, std::string value);                       // plain text, as yet unencoded
  VASTMacros& set(VASTMacro macro, const std::vector<std::string>& values);  // with commas between them
  VASTMacros& refuse(VASTMacro macro) { return set(macro, "-2"); }
  VASTMacros& set(VASTError code);
  VASTMacros& setTime(VASTMacro macro, double seconds);
  // What an ad says of itself: its identifiers, categories, type, place in the pod and verification vendors.
  VASTMacros& set(const VASTAd& ad);

  // Macros may stand in brackets as they are, or escaped ("%5BERRORCODE%5D"). Time is linear in the text and the values.
  std::string expanded(std::string_view url) const;

 private:
  std::string valueOf(VASTMacro macro) const;

  std::map<VASTMacro, std::string> values_;
};

}  // namespace velto
