// What work costs as it grows, on the headless platform: one kind of work at several sizes, by turns, so that
// whatever else the machine does hits all sizes. Measured is the processor time of the library and of the
// headless platform below it.
//
//   usage: velto-bench-growth markup|mediation|placements|tracks|texts|polling ROUNDS SIZE...
//
// Prints {"size": ..., "ms": [...]} for each size.
#include "velto/headless/VeltoHeadless.h"
#include "velto/resources/Resources.h"
#include "velto/tracking/VeltoTrackerManager.h"
#include "velto/velto.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <vector>

#include "Measure.h"

namespace {

using namespace velto;
using Platform = headless::Platform;

struct Delegate : VeltoBannerViewControllerDelegate {
  explicit Delegate(std::shared_ptr<UIViewController> controller) : host(std::move(controller)) {}
  std::shared_ptr<UIViewController> presentViewController() override { return host; }
  void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override { ++finished; }

  std::shared_ptr<UIViewController> host;
  size_t finished = 0;
};

template <class Work>
double spent(const Work& work) {
  const double before = bench::threadMilliseconds();
  work();
  return bench::threadMilliseconds() - before;
}

headless::Answer answerWith(const char* kind, std::string body) {
  return {.headers = {{"x-content", kind}, {"x-width", "320"}, {"x-height", "50"}}, .body = std::move(body)};
}

// So many banners load at once, each in its own place of one window.
double load(size_t placements, const headless::Answer& answer) {
  auto platform = Platform::install();
  platform->veltoBundle().files["omsdk-v1.js"] = resourceText("omsdk-v1.js").value();
  platform->setPagesFinishByThemselves(true);
  platform->urlSession().respond("", answer);
  VeltoFramework::addVeltoKey("bench");
  double milliseconds = 0;
  {
    headless::HostWindow window;
    auto delegate = std::make_shared<Delegate>(window.controller());
    std::vector<std::shared_ptr<VeltoBannerViewController>> banners;
    milliseconds = spent([&] {
      for (size_t i = 0; i < placements; ++i) {
        banners.push_back(VeltoBannerViewController::initWithDelegate(
            delegate, VeltoBannerSize320x50, CGPoint{0, static_cast<double>(50 * i)}));
        banners.back()->load();
      }
      platform->runUntilIdle();
    });
    if (delegate->finished != placements) throw std::runtime_error("an ad did not come");
    banners.clear();
  }
  Platform::uninstall();
  return milliseconds;
}

// --- the kinds of work; each takes its size

// Many small tags and comments, before the page's head too, where the library looks for a place.
double markup(size_t bytes) {
  std::string text = "<!DOCTYPE html>";
  while (text.size() < bytes / 4) text += "<!-- a remark -->\n";
  text += "<html><head><script src=\"mraid.js\"></script></head><body><a href='velto://loadFinished'></a>";
  while (text.size() < bytes)
    text +=
        "<p class=\"line\">Some words <a href=\"https://shop.example/?ord=1&x=2\">to follow</a></p>\n"
        "<script src=\"other.js\"></script><!-- and a remark --><img src='https://shop.example/1.png'>\n";
  return load(1, answerWith("html", std::move(text)));
}

// Nobody fills, by turns a network that is not known and one that answers without an ad, but for the last.
double mediation(size_t items) {
  std::string list;
  for (size_t i = 1; i < items; ++i)
    list += i % 2 ? R"({"cn":"OtherNetworkBannerAdapter","n":"other"},)"
                  : R"({"cn":"VeltoPassbackBannerAdapter","e":{"data":"dmVsdG86Ly9ub0ZpbGxBZA=="}},)";
  // The markup: <a href='velto://loadFinished'></a>
  list +=
      R"({"cn":"VeltoPassbackBannerAdapter","e":{"data":"PGEgaHJlZj0ndmVsdG86Ly9sb2FkRmluaXNoZWQnPjwvYT4="}})";
  return load(1, answerWith("mediation", "{\"mediation\":[" + list + "]}"));
}

double placements(size_t count) {
  return load(count, answerWith("html", "<html><head></head><body><a href='velto://loadFinished'></a>"));
}

std::string number(size_t value) {
  return std::to_string(value);
}

void requireStored(Platform& platform, size_t count) {
  const auto stored = platform.standardUserDefaults().objectForKey("kVeltoTrackIdentifierKey");
  const auto* events = stored ? std::get_if<DefaultsDictionary>(&*stored) : nullptr;
  if ((events ? events->size() : 0) != count)
    throw std::runtime_error("the store does not hold what it should");
}

// Lets time pass; the platform does not keep what was asked.
void goOn(Platform& platform, std::chrono::seconds time) {
  platform.advance(time);
  platform.urlSession().forgetAnswered();
}

// So many clicks while the server is away: each is stored and sent.
double tracks(size_t clicks) {
  auto platform = Platform::install();
  VeltoFramework::addVeltoKey("bench");
  platform->urlSession().respond("", headless::Answer::offline());
  const double milliseconds = spent([&] {
    for (size_t i = 0; i < clicks; ++i) {
      VeltoTrackerManager::trackClickForBannerId("banner-" + number(i), "publisher", "order");
      if (i % 100 == 0) goOn(*platform, {});
    }
    goOn(*platform, {});
  });
  requireStored(*platform, clicks + 1);  // the install too
  Platform::uninstall();
  return milliseconds;
}

// The texts of as many clicks in the containers that hold them, and nothing else: a memory's own cost of more texts
// than its caches hold.
double texts(size_t clicks) {
  Platform::install();
  DefaultsDictionary pending, stored;
  std::unordered_set<std::string> sent;
  const double milliseconds = spent([&] {
    for (size_t i = 0; i < clicks; ++i) {
      const auto text =
          VeltoTrackerManager::clickIdentifierForBannerId("banner-" + number(i), "publisher", "order");
      sent.insert(text);
      pending.emplace(text, "click");
      stored[text] = "click";
    }
  });
  if (stored.size() != clicks || pending != stored) throw std::runtime_error("two texts were the same");
  Platform::uninstall();
  return milliseconds;
}

// A start with so many clicks waiting, and polling until each was sent; every other one is acknowledged.
double polling(size_t waiting) {
  constexpr size_t ticks = 100;
  DefaultsDictionary events;
  Platform::install();
  while (events.size() < waiting)
    events[VeltoTrackerManager::clickIdentifierForBannerId("banner-" + number(events.size()), "p", "o")] =
        "click";
  auto store = std::make_shared<headless::MemoryDefaults>();
  store->setObject("kVeltoTrackIdentifierKey", events);
  auto platform = Platform::install(store);
  size_t sent = 0;
  const auto any = [](const NSURLRequest&) { return true; };
  platform->urlSession().respond(
      any, [&sent](const NSURLRequest&) { return headless::Answer{.body = ++sent % 2 ? "1" : "0"}; });
  const double milliseconds = spent([&] {
    VeltoTrackerManager::start();
    for (size_t done = 0; done < waiting; done += ticks) goOn(*platform, std::chrono::seconds(10) * ticks);
  });
  requireStored(*platform, waiting / 2);
  Platform::uninstall();
  return milliseconds;
}

// Small sizes are done again and again for a sample, so that each takes its time.
double sample(double (*work)(size_t), size_t size) {
  constexpr double enough = 5;  // milliseconds
  constexpr int mostTimes = 50;
  double milliseconds = 0;
  int times = 0;
  for (; milliseconds < enough && times < mostTimes; ++times) milliseconds += work(size);
  return milliseconds / times;
}

int run(double (*work)(size_t), int rounds, const std::vector<size_t>& sizes) {
  // What was taken stays: long texts would cost the system's time for handing out pages and short ones would not.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  std::map<size_t, std::vector<double>> samples;
  work(sizes.back());  // the first of all is not counted
  for (int round = 0; round < rounds; ++round)
    for (const size_t size : sizes) samples[size].push_back(sample(work, size));
  for (const auto& [size, milliseconds] : samples) {
    std::printf("{\"size\": %zu, \"ms\": [", size);
    for (size_t i = 0; i < milliseconds.size(); ++i) std::printf("%s%.4f", i ? ", " : "", milliseconds[i]);
    std::printf("]}\n");
  }
  return 0;
}

}  // namespace

int main(int count, char** words) {
  const std::map<std::string, double (*)(size_t)> kinds{{"markup", markup},         {"mediation", mediation},
                                                        {"placements", placements}, {"tracks", tracks},
                                                        {"texts", texts},           {"polling", polling}};
  const auto kind = kinds.find(count > 1 ? words[1] : "");
  const int rounds = count > 2 ? std::atoi(words[2]) : 0;
  std::vector<size_t> sizes;
  for (int i = 3; i < count; ++i) sizes.push_back(std::strtoul(words[i], nullptr, 10));
  if (kind == kinds.end() || rounds < 1 || sizes.empty()) {
    std::fprintf(stderr, "usage: %s markup|mediation|placements|tracks|texts|polling ROUNDS SIZE...\n",
                 words[0]);
    return 2;
  }
  try {
    return run(kind->second, rounds, sizes);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s: %s\n", words[0], words[1], error.what());
    return 1;
  }
}
