// What a picture of the screen shows of the ad.
#pragma once

#include <velto/platform/Geometry.h>

#include <optional>
#include <string>

namespace velto::preview {

struct Look {
  int colours = 0;           // different ones, of the whole ad; counted up to 256
  double closeContrast = 1;  // between the lightest and the darkest of the close region (WCAG 2.1), 1 … 21
};

// Of the ad at that place of a screen so wide. Nothing when the file is no picture, or the ad lies outside it.
std::optional<Look> lookAt(const std::string& file, const CGRect& ad, double screenWidth);

}  // namespace velto::preview
