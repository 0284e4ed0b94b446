// The tour's video ad: seen, pressed, played on and skipped by keys.
#include "Tour.h"

namespace demo {

void Tour::videoAd() {
  const std::string name = VideoAds::name;
  stage_.clear();
  // Above the picture, between two buttons.
  const auto edge = [&](const Picture& picture) { return picture.at(wholeContent().midX(), 40); };
  const auto before = edge(camera_.take());
  stage_.videoAds().open();
  const auto heard = [&](const std::string& what) {
    return expect(name + ": " + what, [&] { return stage_.count(name, what) == 1; });
  };
  heard("started: Long Coast");
  // A white ball on black, in all of the window; between the buttons nothing else is white.
  const auto shows = [&](const Picture& picture) {
    const velto::CGRect between{{0, 100}, {double(picture.width()), double(picture.height()) - 200}};
    return edge(picture) == Color(0) && before != Color(0) && picture.brightest(between) > 0xf0;
  };
  expect(name + ": it is seen", [&] { return shows(camera_.take()); });
  photograph(name);
  hand_.click({wholeContent().midX(), wholeContent().midY()});
  heard("pressed");
  expectOpened(name, "https://long-coast.example/landing/ferries");
  heard("paused");
  hand_.press("space");
  heard("resumed");
  expect(name + ": it may be skipped", [&] { return stage_.videoAds().seconds() > 3.1; });
  hand_.press("Escape");
  heard("skipped");
  heard("ended");
  expect(name + ": the page is there again", [&] { return edge(camera_.take()) == before; });
}

}  // namespace demo
