// The tour's second half: interstitials, and what another network's adapter shows.

#include "Tour.h"

namespace demo {
namespace {

constexpr Color orchestra = 0xc9184a;  // of the frames that the pages draw around themselves
constexpr Color lighthouse = 0xe85d04;
constexpr Color driftwood = 0x0f3d4c;

}  // namespace

void Tour::showInterstitials() {
  stage_.clear();
  countdown();
  autoShow();
  for (const char* name : {"left", "left spring", "right", "right spring", "random"}) comeIn(name);
  reload();
  anotherNetwork();
}

velto::CGRect Tour::wholeContent() const {
  const Picture picture = camera_.take();
  return {{0, 0}, {double(picture.width()), double(picture.height())}};
}

// At the top right, 16 points from the edges.
velto::CGRect Tour::closeButton() const {
  return {{wholeContent().maxX() - 16 - 33, 16}, {33, 33}};
}

velto::CGRect Tour::card() const {
  const auto content = wholeContent();
  return {{content.midX() - 320, content.midY() - 240}, {640, 480}};
}

// A person can tell from the button whether it can be pressed: it is brighter then.
bool Tour::canClose() const {
  const auto button = closeButton();
  const Picture picture = camera_.take();
  const velto::CGRect title{{button.midX() - 6, button.midY() - 6}, {12, 12}};
  return picture.at(button.minX() + 5, button.midY()) == Color(0) && picture.brightest(title) > 0xf0;
}

// What an interstitial covers of a row of the page in which nothing else is drawn.
std::optional<Picture::Columns> Tour::covered(const Picture& picture) const {
  return picture.otherThan(bareRow_, picture.height() - 20);
}

void Tour::open(const std::string& name) {
  expect(name + ": nothing covers the page before", [this] {
    const Picture picture = camera_.take();
    bareRow_ = picture.at(4, picture.height() - 20).value_or(0);
    return bareRow_ > 0xc0c0c0 && !covered(picture);
  });
  stage_.interstitials().open(name);
}

void Tour::expectGone(const std::string& name, int times) {
  expect(name + ": it is gone",
         [&] { return stage_.count(name, "dismissed") == times && !covered(camera_.take()); });
}

void Tour::expectHeard(const std::string& name, const std::vector<std::string>& heard) {
  std::vector<std::string> all;
  for (const auto& event : stage_.events())
    if (event.name == name && event.what != "click acknowledged") all.push_back(event.what);
  expect(name + ": the callbacks come in order", [&] { return all == heard; });
}

void Tour::countdown() {
  const std::string name = "countdown";
  open(name);
  expect(name + ": the page below is dimmed while it comes", [&] {
    const Picture picture = camera_.take();
    const auto columns = covered(picture);
    if (!columns || stage_.count(name, "DidAppear") > 0) return false;
    photograph("full-coming", picture);
    return columns->first == 0 && columns->last == picture.width() - 1;
  });
  expect(name + ": DidAppear", [&] { return stage_.count(name, "DidAppear") == 1; });
  hand_.click({closeButton().midX(), closeButton().midY()});
  hand_.press("Escape");
  expect(name + ": the ad fills the window", [&] { return camera_.take().shows(wholeContent(), orchestra); });
  photograph("full-counting");
  hand_.click({wholeContent().midX(), wholeContent().midY()});
  expect(name + ": the tap is reported", [&] { return stage_.count(name, "DidPress") == 1; });
  expect(name + ": the click is acknowledged", [&] { return stage_.count(name, "click acknowledged") == 1; });
  expectOpened(name, "https://orchestra.example/landing/season?c=ord%3D7101%26veltos%3D51%26veltop%3D9");
  expect(name + ": the countdown ends", [this] { return canClose(); });
  photograph("full-counted");
  hand_.click({closeButton().midX(), closeButton().midY()});
  expectGone(name, 1);
  expectHeard(name, {"load", "DidFinishLoad", "DidAppear", "DidPress", "DidClose", "dismissed"});
}

void Tour::autoShow() {
  const std::string name = "auto";
  open(name);
  expect(name + ": a card over the dimmed page", [this] {
    const Picture picture = camera_.take();
    const auto columns = covered(picture);
    return columns && columns->last == picture.width() - 1 && picture.shows(card(), lighthouse) && canClose();
  });
  photograph("full-card");
  hand_.press("Escape");
  expectGone(name, 1);
  expectHeard(name, {"load", "DidFinishLoad", "DidAppear", "DidClose", "dismissed"});
}

// Seen well on its way, when it covers one side only; or, with spring, which is quick, beyond its place.
void Tour::comeIn(const std::string& name) {
  const bool fromLeft = name.starts_with("left");
  const bool springs = name.ends_with("spring");
  open(name);
  expect(name + ": it comes from its side", [&] {
    const Picture picture = camera_.take();
    const auto columns = covered(picture);
    if (!columns) return false;
    const int width = picture.width();
    const int enough = springs || name == "random" ? 3 : width / 5;
    const bool left = columns->first == 0 && columns->last > enough && columns->last < width - enough;
    const bool right =
        columns->last == width - 1 && columns->first > enough && columns->first < width - enough;
    const bool seen = name == "random" ? left || right : fromLeft != springs ? left : right;
    if (seen) photograph("full-" + name, picture);
    return seen;
  });
  expect(name + ": and fills the window", [&] {
    return stage_.count(name, "DidAppear") == 1 && camera_.take().shows(wholeContent(), orchestra) &&
           canClose();
  });
  hand_.press("Escape");
  expectGone(name, 1);
}

void Tour::reload() {
  const std::string name = "reload";
  open(name);
  expect(name + ": the first", [&] { return camera_.take().shows(wholeContent(), orchestra) && canClose(); });
  hand_.click({closeButton().midX(), closeButton().midY()});
  expect(name + ": the one that was loaded meanwhile",
         [&] { return camera_.take().shows(card(), lighthouse) && canClose(); });
  hand_.press("Escape");
  expectGone(name, 2);
  expectHeard(name, {"load", "DidFinishLoad", "DidAppear", "load", "DidClose", "dismissed", "DidFinishLoad",
                     "DidAppear", "DidClose", "dismissed"});
}

void Tour::anotherNetwork() {
  load("net banner");
  const auto frame = stage_.expectedFrame("net banner", {320, 50});
  expect("net banner: the banner is where it belongs",
         [&] { return camera_.take().shows(frame, driftwood); });
  photograph("net-banner");
  hand_.click({frame.minX() + 100, frame.minY() + 15});
  expect("net banner: the tap is reported", [this] { return stage_.count("net banner", "DidPress") == 1; });
  expectOpened("net banner", "https://driftwood.example/landing/sails");
  stage_.clear();

  const std::string name = "net full";
  open(name);
  expect(name + ": the network's screen",
         [&] { return stage_.count(name, "DidAppear") == 1 && camera_.take().at(4, 4) == driftwood; });
  photograph("net-full");
  const auto content = wholeContent();
  hand_.click({content.midX(), content.size.height * 0.75});
  expect(name + ": the tap is reported", [&] { return stage_.count(name, "DidPress") == 1; });
  expectOpened(name, "https://driftwood.example/landing/regatta");
  hand_.press("Escape");
  expectGone(name, 1);
  expectHeard(name, {"load", "DidFinishLoad", "DidAppear", "DidPress", "DidClose", "dismissed"});
}

void Tour::expectOpened(const std::string& name, const std::string& url) {
  expect(name + ": its link is opened in the browser", [&] {
    const auto opened = links_.opened();
    return !opened.empty() && opened.back() == url;
  });
}

}  // namespace demo
