// What the tests of tracking share: the requests, the store, and a reader of identifiers that has nothing in
// common with their maker.
#pragma once

#include "velto/tracking/VeltoTrackerManager.h"

#include <algorithm>
#include <cctype>

#include "../support/HeadlessTest.h"

namespace velto::test {

// Base64 digit by digit. "malformed" for anything that a strict server would refuse.
inline std::string unwrapped(const std::string& text) {
  static const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::string prefix = text.substr(0, 3);
  if (prefix.size() != 3 ||
      !std::all_of(prefix.begin(), prefix.end(), [](unsigned char c) { return std::isalnum(c); }))
    return "malformed";
  std::string bytes;
  unsigned bits = 0;
  int held = 0;
  size_t column = 0;
  for (size_t i = 3; i < text.size(); ++i, ++column) {
    if (column == 64) {
      if (text.substr(i, 2) != "\r\n" || i + 2 >= text.size()) return "malformed";
      i += 2;
      column = 0;
    }
    if (text[i] == '=' && text.size() - i <= 2) continue;
    const auto digit = alphabet.find(text[i]);
    if (digit == std::string::npos) return "malformed";
    bits = bits << 6 | static_cast<unsigned>(digit);
    held += 6;
    if (held >= 8) bytes += static_cast<char>(bits >> (held -= 8));
  }
  return bytes;
}

inline std::string decoded(const std::string& identifier) {
  return unwrapped(unwrapped(identifier));
}

class TrackTest : public HeadlessTest {
 protected:
  static constexpr char storeKey[] = "kVeltoTrackIdentifierKey";

  static void click(const std::string& banner = "b1") {
    VeltoTrackerManager::trackClickForBannerId(banner, "p1", "o1");
  }
  void answerTracks(headless::Answer answer) { platform->urlSession().respond("trk_", std::move(answer)); }
  static headless::Answer acknowledged() { return {.body = "1"}; }
  size_t sent() { return platform->urlSession().requests("trk_").size(); }
  DefaultsDictionary stored() {
    const auto value = platform->defaults()->objectForKey(storeKey);
    const auto* dictionary = value ? std::get_if<DefaultsDictionary>(&*value) : nullptr;
    return dictionary ? *dictionary : DefaultsDictionary{};
  }
  // The application starts again with what it left in its store.
  void relaunch() {
    platform = headless::Platform::install(platform->defaults());
    VeltoTrackerManager::start();
  }
};

}  // namespace velto::test
