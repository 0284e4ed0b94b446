// When and where icons stand.
#include "velto/video/VideoAdIcons.h"

#include "velto/vast/VASTTime.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace velto {
namespace {

constexpr double usualSide = 20, largestSide = 100;  // points
constexpr double largestPart = 0.25;                 // of the side of the view
constexpr size_t mostIcons = 5;

double beginOf(const VASTIcon& icon) {
  return icon.offset.value_or(0);
}
double endOf(const VASTIcon& icon) {
  return icon.duration ? beginOf(icon) + *icon.duration : std::numeric_limits<double>::infinity();
}

double sideOf(double said, double whole) {
  const double wanted = std::isfinite(said) && said > 0 ? said : usualSide;
  return std::min({wanted, largestSide, std::max(0.0, whole * largestPart)});
}

// "left", "right", "top", "bottom", or points from the left or the top.
double positionOf(const std::string& text, double room) {
  room = std::max(0.0, room);
  if (text == "right" || text == "bottom") return room;
  double points = 0;
  std::from_chars(text.data(), text.data() + text.size(), points);
  return std::isfinite(points) ? std::clamp(points, 0.0, room) : 0;
}

CGRect frameOf(const VASTIcon& icon, const CGRect& bounds) {
  const CGSize size{sideOf(icon.width, bounds.size.width), sideOf(icon.height, bounds.size.height)};
  return {{positionOf(icon.xPosition, bounds.size.width - size.width),
           positionOf(icon.yPosition, bounds.size.height - size.height)},
          size};
}

}  // namespace

// Of each programme the first: those of wrappers come later, and stand for the same.
VideoAdIcons::VideoAdIcons(const std::vector<VASTIcon>& icons, Actions actions)
    : actions_(std::move(actions)) {
  for (size_t place = 0; place < icons.size() && icons_.size() < mostIcons; ++place) {
    const auto& icon = icons[place];
    const bool isThere = std::any_of(icons_.begin(), icons_.end(), [&](const auto& other) {
      return !icon.program.empty() && other.icon.program == icon.program;
    });
    if (!isThere) icons_.push_back({icon, place});
  }
}

std::vector<double> VideoAdIcons::times() const {
  std::vector<double> times;
  for (const auto& shown : icons_) {
    times.push_back(beginOf(shown.icon));
    if (shown.icon.duration) times.push_back(endOf(shown.icon));
  }
  return times;
}

void VideoAdIcons::show(double seconds, UIView& over) {
  for (auto& shown : icons_) {
    const auto& icon = shown.icon;
    const bool isItsTime = seconds >= beginOf(icon) && seconds < endOf(icon);
    if (!isItsTime) {
      if (const auto page = std::exchange(shown.page, nullptr)) page->view()->removeFromSuperview();
      continue;
    }
    const auto frame = frameOf(icon, over.bounds());
    if (!shown.page && !std::exchange(shown.isTried, true)) {
      const auto place = shown.place;
      shown.page = VideoAdPage::make({icon.resources, icon.clickThrough, icon.program}, frame.size,
                                     {[told = actions_.shown, place] { told(place); },
                                      [told = actions_.clicked, place] { return told(place); },
                                      {},
                                      actions_.pressed});
      if (shown.page) over.addSubview(shown.page->view());
    }
    if (shown.page && shown.page->view()->frame() != frame) shown.page->view()->setFrame(frame);
  }
}

void VideoAdIcons::clear() {
  for (auto& shown : icons_)
    if (const auto page = std::exchange(shown.page, nullptr)) page->view()->removeFromSuperview();
  icons_.clear();
}

}  // namespace velto
