// What velto-preview was asked to do.
#pragma once

#include <velto/platform/Geometry.h>

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/CommandLine.h"

namespace velto::preview {

using tools::UsageError;  // something given is wrong: one line, exit code 2

struct Arguments {
  bool interstitial = false;
  CGSize size{320, 50};     // of the banner, points
  CGSize screen{390, 844};  // of the virtual screen, points
  bool atTop = false;
  std::string stepsFile;
  std::string out;  // folder for pictures; empty: none are kept
  std::chrono::milliseconds timeout{10'000};
  bool hasTimeout = false;  // it was given: a video ad's own limits are the same
  std::string
      caFile;  // certificate authorities that a video ad's servers are trusted by; empty: the system's
  bool noSandbox = false;
  std::string report;             // folder for the report; empty: none is written
  std::set<std::string> allowed;  // findings that are not told
  std::string failOn;             // severity from which on findings fail the run; empty: none do
  std::string baseline;           // findings.json of an earlier run
  // Whether the page is looked at for findings.
  bool examines() const { return expectsFindings || !report.empty() || !failOn.empty(); }
  bool expectsFindings = false;                  // steps expect some to be absent
  std::map<std::string, std::string> variables;  // of steps
  std::string recordFile;                        // what is done by hand goes there as steps; empty: nowhere
  bool isAnswer = false;                         // the creative is a recorded answer of an ad server
  std::string creative;                          // a file or an http(s) URL
  bool isVideoAd = false;                        // it is a document of video ads

  // Many creatives (Batch.h).
  bool isBatch() const { return isMerge || !all.empty() || creatives.size() > 1; }
  std::vector<std::string> creatives;  // all that were named; of a merge the folders
  std::vector<std::string> videoAds;   // those of them that are documents of video ads
  std::vector<std::string> all;        // folders, and files that list creatives
  bool isMerge = false;
  int jobs = 0;  // at once; 0: one for each processor
  struct Shard {
    int number = 1, count = 1;
  } shard;
  std::chrono::milliseconds timeLimit{120'000};  // of one play
  std::vector<std::string> ofEach;               // the options that each play is given
};

// Nothing when the call asked for a text only (--help), which has been given. Throws UsageError.
std::optional<Arguments> parseArguments(const std::vector<std::string>& words);

}  // namespace velto::preview
