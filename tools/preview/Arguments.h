// What velto-preview was asked to do.
#pragma once

#include <velto/platform/Geometry.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

namespace velto::preview {

// Something given is wrong: one line, exit code 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Arguments {
  bool interstitial = false;
  bool help = false;
  CGSize size{320, 50};     // of the banner, points
  CGSize screen{390, 844};  // of the virtual screen, points
  bool atTop = false;
  std::string stepsFile;
  std::string out;  // folder for pictures; empty: none are kept
  std::chrono::milliseconds timeout{10'000};
  std::string creative;  // a file or an http(s) URL
};

extern const char helpText[];

// Throws UsageError.
Arguments parseArguments(int count, char** words);

}  // namespace velto::preview
