// Reads what ads' creatives are made of. Inner header of this folder, and of tools that check documents; any thread.
#pragma once

#include "velto/vast/VASTAd.h"
#include "velto/vast/VASTNode.h"

#include <string>
#include <string_view>
#include <vector>

namespace velto {

// Into linear, companions and hasNonLinear of the ad; `node` is its InLine or Wrapper.
void readVASTCreatives(const VASTNode& node, VASTAd& ad);

// The addresses of the children of that name (in lower case); others than of http and https are left out.
std::vector<std::string> readVASTURLs(const VASTNode& node, std::string_view name);

// The event of a tracking as the standard writes its name, whatever its case; empty where no version knows it.
std::string_view vastEventNamed(const std::string& name);

// Of its TrackingEvents.
std::vector<VASTTracking> readVASTTrackings(const VASTNode& node);

}  // namespace velto
