// The tour's page with a dialog and a toast over a banner.
#include <algorithm>
#include <cmath>

#include "CoveredPage.h"
#include "Tour.h"

namespace demo {
namespace {

constexpr Color bakery = 0x0b6e4f;

// How much of the frame lies outside of the other, in percent.
int shareBeside(const velto::CGRect& frame, const velto::CGRect& other) {
  const double width =
      std::max(0.0, std::min(frame.maxX(), other.maxX()) - std::max(frame.minX(), other.minX()));
  const double height =
      std::max(0.0, std::min(frame.maxY(), other.maxY()) - std::max(frame.minY(), other.minY()));
  return int(std::lround(100 - 100 * width * height / (frame.size.width * frame.size.height)));
}

}  // namespace

void Tour::coverSlot() {
  CoveredPage page;
  const Camera camera(page.content());
  expect("covered: the banner stands in its slot", [&] {
    return page.isLoaded() && camera.take().shows(page.adFrame(), bakery) && page.seen() == 100;
  });
  const Picture bare = camera.take();
  const auto expectCovered = [&](const std::string& name, const std::function<velto::CGRect()>& cover) {
    expect("covered: as much is measured as the " + name + " leaves free", [&] {
      const velto::CGRect over = cover();
      const int left = shareBeside(page.adFrame(), over);
      const double x = over.midX();
      const double y = std::max(over.minY(), page.adFrame().minY()) + 1;
      return left < 100 && camera.take().at(x, y) != bare.at(x, y) && std::abs(page.seen() - left) <= 2;
    });
    photograph("slot-with-" + name, camera.take());
  };
  const auto expectBare = [&](const std::string& name) {
    expect("covered: and all of it after the " + name, [&] {
      const auto dialog = page.dialogFrame(), toast = page.toastFrame();
      return dialog == velto::CGRect{} && toast == velto::CGRect{} && page.seen() == 100 &&
             camera.take().shows(page.adFrame(), bakery);
    });
  };
  page.showDialog(true);
  expectCovered("dialog", [&] { return page.dialogFrame(); });
  page.showDialog(false);
  expectBare("dialog");
  page.showToast(true);
  expectCovered("toast", [&] { return page.toastFrame(); });
  page.showToast(false);
  expectBare("toast");
}

}  // namespace demo
