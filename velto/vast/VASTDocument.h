// A document of video ads, VAST 2.0 to 4.2, read into plain values. Any thread; nothing is fetched.
//
//   const auto document = velto::VASTDocument::read(text);
//   for (const auto& ad : document.ads) …   // wrappers among them: VASTResolver.h goes after those
//
// What is wrong in the small is read as it was meant: names in another case, blanks and line breaks around addresses,
// ampersands that nobody escaped, lengths with and without milliseconds, addresses without CDATA, elements that nobody knows.
#pragma once

#include "velto/Export.h"
#include "velto/vast/VASTAd.h"
#include "velto/vast/VASTError.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

struct VASTNode;

struct VELTO_EXPORT VASTDocument {
  // Larger ones are refused (100), before or while they come, and so is what is nested deeper than 64 or has more than
  // 100,000 elements. Of longer lists the rest is left out.
  static constexpr size_t mostBytes = size_t{5} << 20U;
  static constexpr size_t mostAds = 100;
  static constexpr size_t mostOfAKind = 1000;

  std::string version;
  std::vector<VASTAd> ads;  // in the document's order; those that are neither inline nor wrapper are left out
  std::vector<std::string> errors;  // told when there are no ads (VAST 4.2, 3.2.1)
  // Set: nothing of it can be used. 100, 101 or 102.
  std::optional<VASTError> error;

  static VASTDocument read(std::string_view text);
  // For documents inside others.
  static VASTDocument read(const VASTNode& root);
};

}  // namespace velto
