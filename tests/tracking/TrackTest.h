// What the tests of tracking share: the requests, the store, and a reader of identifiers.
#pragma once

#include "velto/platform/foundation/Text.h"
#include "velto/tracking/VeltoTrackerManager.h"

#include "../support/HeadlessTest.h"
#include "sandbox/TrackIdentifier.h"

namespace velto::test {

// The text of an identifier. The sandbox's reader has nothing in common with its maker.
inline std::string decoded(const std::string& identifier) {
  std::vector<std::string> problems;
  const auto track = sandbox::readTrackIdentifier(identifier, problems);
  return track ? track->text : join(problems, "\n");
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
