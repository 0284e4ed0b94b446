// What velto-preview was asked to do.
#pragma once

#include <velto/platform/Geometry.h>

#include <chrono>
#include <optional>
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
  std::string creative;  // a file or an http(s) URL
};

// Nothing when the call asked for a text only (--help), which has been given. Throws UsageError.
std::optional<Arguments> parseArguments(const std::vector<std::string>& words);

}  // namespace velto::preview
