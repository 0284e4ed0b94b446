// See Tour.h.
#include "Tour.h"

#include <algorithm>
#include <map>
#include <utility>

namespace demo {
namespace {

constexpr gint64 patience = 120 * G_USEC_PER_SEC;  // a slow machine is no failure

// What the sandbox answers to each case, and the color of the frame that the page draws around itself.
struct Look {
  velto::CGSize size;
  Color color;
};
const Look& lookOf(const std::string& name) {
  static const Look bakery{{320, 50}, 0x0b6e4f};
  static const std::map<std::string, Look> others{
      {"bottom", {{728, 90}, 0x1d3557}}, {"point", {{300, 250}, 0x9d0208}}, {"smart", {{600, 60}, 0x5f0f40}}};
  const auto found = others.find(name);
  return found == others.end() ? bakery : found->second;
}

}  // namespace

Tour::Tour(Stage& stage, const LinkTrap& links, std::filesystem::path out)
    : stage_(stage), links_(links), out_(std::move(out)), camera_(stage.content()), hand_(stage.content()) {}

std::vector<std::string> Tour::run() {
  expect("the window is drawn", [this] { return camera_.take().width() > 0; });
  showAllSizes();
  tap();
  remove();
  slideIn("slide", false);
  slideIn("spring", true);
  refresh();
  fail();
  showInterstitials();
  showRichMedia();
  videoAd();
  coverSlot();
  inspect();
  return missing_;
}

void Tour::showAllSizes() {
  for (const char* name : {"top", "bottom", "point", "smart"}) {
    load(name);
    expectShown(name);
    photograph(name);
  }
}

void Tour::tap() {
  const auto frame = stage_.expectedFrame("point", lookOf("point").size);
  hand_.click({frame.midX(), frame.midY()});
  expect("point: the tap is reported", [this] { return stage_.count("point", "DidPress") == 1; });
  expect("point: the click is acknowledged",
         [this] { return stage_.count("point", "click acknowledged") == 1; });
  expectOpened("point",
               "https://paperlantern.example/landing/summer?c=ord%3D7001%26veltos%3D42%26veltop%3D9");
  expectShown("point");  // and the ad stays
}

void Tour::remove() {
  stage_.clear();
  expect("removed banners leave the window", [this] {
    const Picture picture = camera_.take();
    for (const char* name : {"top", "bottom", "point", "smart"})
      if (picture.shows(stage_.expectedFrame(name, lookOf(name).size), lookOf(name).color)) return false;
    return true;
  });
  photograph("removed");
}

// The banner is seen on its way, or, with spring, which is quick, beyond its place; and then it stays in its
// place.
void Tour::slideIn(const std::string& name, bool overshoots) {
  const Color color = lookOf(name).color;
  const auto frame = stage_.expectedFrame(name, lookOf(name).size);
  bool wasElsewhere = false;
  load(name);
  expect(name + ": the banner slides in", [&] {
    const Picture picture = camera_.take();
    if (const auto right = picture.rightEnd(1, color); right && !wasElsewhere) {
      wasElsewhere =
          overshoots ? *right > frame.maxX() + 2 : *right > frame.minX() && *right < frame.maxX() - 2;
      if (wasElsewhere) photograph(name, picture);
    }
    return wasElsewhere && picture.shows(frame, color);
  });
}

void Tour::refresh() {
  const auto frame = stage_.expectedFrame("refresh", lookOf("refresh").size);
  const auto background = [&] { return camera_.take().at(frame.minX() + 4, frame.minY() + 4); };
  load("refresh");
  expectShown("refresh");
  photograph("refresh-before");
  const auto first = background();
  expect("refresh: a second ad comes by itself",
         [this] { return stage_.count("refresh", "DidFinishLoad") >= 2; });
  expect("refresh: it replaces the first", [&] { return background() != first; });
  expectShown("refresh");
  photograph("refresh-after");
  expect("refresh: and a third", [this] { return stage_.count("refresh", "DidFinishLoad") >= 3; });
}

void Tour::fail() {
  stage_.show("no fill");
  expect("no fill: is reported with code 0", [this] { return stage_.count("no fill", "DidFail 0") == 1; });
  stage_.show("error");
  expect("error: is reported with code 1", [this] { return stage_.count("error", "DidFail 1") == 1; });
  photograph("failures");
}

void Tour::load(const std::string& name) {
  stage_.show(name);
  expect(name + ": DidFinishLoad", [&] { return stage_.count(name, "DidFinishLoad") > 0; });
}

bool Tour::expect(const std::string& what, const std::function<bool()>& condition) {
  // Looked at after each frame, and now and then when none comes. A timer of usual priority would keep frames
  // from coming.
  bool due = true;
  const auto setDue = +[](GdkFrameClock*, gpointer flag) { *static_cast<bool*>(flag) = true; };
  const auto setDueByTimer = +[](gpointer flag) -> gboolean { return *static_cast<bool*>(flag) = true; };
  GdkFrameClock* frames = GDK_FRAME_CLOCK(g_object_ref(gtk_widget_get_frame_clock(stage_.content())));
  const gulong drawn = g_signal_connect(frames, "after-paint", G_CALLBACK(setDue), &due);
  const guint timer = g_timeout_add_full(G_PRIORITY_LOW, 50, setDueByTimer, &due, nullptr);
  const gint64 end = g_get_monotonic_time() + patience;
  bool holds = false;
  while (!holds && stage_.isOpen() && g_get_monotonic_time() < end) {
    if (std::exchange(due, false)) holds = condition();
    if (!holds) g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(timer);
  g_signal_handler_disconnect(frames, drawn);
  g_object_unref(frames);
  if (!holds) {
    missing_.push_back(what);
    if (stage_.isOpen()) photograph("missing-" + std::to_string(missing_.size()));
  }
  return holds;
}

bool Tour::expectShown(const std::string& name) {
  const Look& look = lookOf(name);
  return expect(name + ": the banner is where it belongs",
                [&] { return camera_.take().shows(stage_.expectedFrame(name, look.size), look.color); });
}

void Tour::photograph(const std::string& name) {
  photograph(name, camera_.take());
}

void Tour::photograph(const std::string& name, const Picture& picture) {
  std::filesystem::create_directories(out_);
  std::string fileName = name + ".png";
  std::replace(fileName.begin(), fileName.end(), ' ', '-');
  const auto file = out_ / fileName;
  if (!picture.save(file)) missing_.push_back(file.string() + ": cannot be written");
}

}  // namespace demo
