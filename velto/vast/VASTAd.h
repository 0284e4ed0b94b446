// One ad of a document: what it is made of, whom it tells what, or where it is to be had instead. Plain values; any thread.
// The numbers name sections of VAST 4.2; documents of 2.0 and 3.0 say less in the same places.
#pragma once

#include "velto/vast/VASTCreative.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// A category with the list that it is of (3.4.5), and the ones that a wrapper does not want (3.19.2).
struct VASTCategory {
  std::string authority, code;
};

struct VASTPricing {     // 3.4.8
  std::string model;     // "cpm", "cpc", "cpe", "cpv"; lower case
  std::string currency;  // ISO 4217
  double value = 0;
};

// Who is told whether the ad could be seen (3.5).
struct VASTViewableImpression {
  std::vector<std::string> viewable, notViewable, undetermined;
};

// A script that measures the ad (3.17). Those of documents before 4.1 stand in an extension and are the same here.
struct VASTVerification {
  std::string vendor;
  struct Script {
    std::string url, apiFramework;  // "omid"
    bool browserOptional = false;
  };
  std::vector<Script> scripts;  // 3.17.1
  bool hasExecutable = false;   // 3.17.2: programs of other kinds, which are not run
  std::string parameters;       // 3.17.4
  // Told when it was not run, with [REASON].
  std::vector<std::string> notExecuted;  // 3.17.3

  // The script that Open Measurement runs; null: there is none, which is told as VASTNotVerified::NotSupported.
  const Script* openMeasurementScript() const {
    for (const auto& script : scripts)
      if (script.apiFramework == "omid") return &script;
    return nullptr;
  }
};

// Where an ad is to be had that this document only stands around (3.19).
struct VASTWrapper {
  std::string tag;                       // VASTAdTagURI
  bool followAdditionalWrappers = true;  // its answer may be a wrapper again
  bool allowMultipleAds = false;         // its answer may be a pod
  std::optional<bool> fallbackOnNoAd;    // without an answer, an ad that stands alone takes the place
  std::vector<VASTCategory> blockedCategories;
};

struct VASTAd {
  std::string id;               // 3.3
  std::optional<int> sequence;  // place in a pod, from 1 on; nothing: stands alone
  std::string adType;           // "video", "audio" or "hybrid"; lower case
  // Set: a wrapper. Then there are no files below, but what is told of the ad inside.
  std::optional<VASTWrapper> wrapper;

  std::string adSystem, adSystemVersion;  // 3.4.1
  std::string adTitle;                    // 3.4.2
  std::string adServingId;                // 3.4.3
  std::string description, advertiser;    // 3.4.6, 3.4.7
  std::vector<VASTCategory> categories;
  std::optional<VASTPricing> pricing;
  std::vector<std::string> surveys;  // 3.4.9
  std::optional<double> expires;     // 3.4.10: not to be used later than so many seconds after it was fetched
  std::vector<std::string> impressions;  // 3.4.4
  std::vector<std::string> errors;       // 3.4.11
  VASTViewableImpression viewableImpression;
  std::vector<VASTVerification> verifications;
  std::vector<VASTExtension> extensions;

  // Of several linear creatives the first by sequence (3.7): an ad here is one video.
  std::optional<VASTLinear> linear;
  std::vector<VASTCompanion> companions;
  VASTCompanionsRequired companionsRequired = VASTCompanionsRequired::None;
  bool hasNonLinear = false;  // 3.12: overlays, which are not drawn here
};

}  // namespace velto
