// Where an element of the page can be tapped, as a person would find it: scrolled into sight, on one of its lines, and
// with nothing over it.
#pragma once

#include <velto/platform/Geometry.h>
#include <velto/platform/foundation/JSON.h>

#include <optional>
#include <string>

namespace velto::preview {

// A script whose value says where the first element that matches is, after it was scrolled into sight.
std::string scriptToFind(const std::string& selector);

// What the script said: a point of the page, or one line about why there is none.
struct Whereabouts {
  std::optional<CGPoint> point;
  std::string fault;
};
Whereabouts whereabouts(const std::optional<JSON>& answer);

}  // namespace velto::preview
