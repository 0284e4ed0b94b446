// What many installations send together while their servers are there, while they are away for an hour, and in the
// hour after. Each virtual client is the library itself on the headless platform: it starts, shows a banner that
// refreshes, is tapped now and then, and ends. Clients know nothing of each other, so they are played one after
// another, in the same three hours of virtual time; memory does not grow with their number.
//
//   usage: velto-bench-fleet CLIENTS
//
// Twice: all servers are away, or those alone that tracks are told to. Prints one JSON object for each hour: what
// was sent, by kind, the mean and the highest number of requests in a second. docs/scale.md has the arithmetic.
#include "velto/headless/VeltoHeadless.h"
#include "velto/tracking/VeltoTrackerManager.h"
#include "velto/velto.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace velto;
using Platform = headless::Platform;

// How people use an application: assumptions, not the library's.
constexpr double startsAnHour = 0.3;   // of an installation, in a busy hour
constexpr double meanSession = 240;    // seconds; how long one lasts falls off exponentially
constexpr double firstStarts = 0.01;   // of all starts: the first of a new installation
constexpr double tapsForAnAd = 0.005;  // of the ads that are shown

constexpr int hours = 3;
constexpr double hour = 3600;
constexpr bool isAway(double time) {
  return time >= hour && time < 2 * hour;
}

enum Kind { Ads, Installs, Clicks, SentAgain, Kinds };
constexpr std::array<const char*, Kinds> names{"ads", "installs", "clicks", "sentAgain"};

struct Counts {
  std::array<std::vector<uint32_t>, Kinds> bySecond;
  Counts() { bySecond.fill(std::vector<uint32_t>(static_cast<size_t>(hours * hour))); }
  void add(Kind kind, double time) {
    if (time < hours * hour) ++bySecond.at(kind).at(static_cast<size_t>(time));
  }
};

struct Delegate : VeltoBannerViewControllerDelegate {
  std::shared_ptr<UIViewController> host;
  size_t shown = 0;
  std::shared_ptr<UIViewController> presentViewController() override { return host; }
  void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override { ++shown; }
};

class Client {
 public:
  Client(Counts& counts, std::mt19937_64& random, bool adsStay)
      : counts_(counts), random_(random), adsStay_(adsStay) {}

  void live() {
    std::exponential_distribution<double> pause(startsAnHour / hour);
    std::exponential_distribution<double> length(1 / meanSession);
    // Some are under way as the first hour begins.
    double start = -10 * meanSession;
    while ((start += pause(random_)) < hours * hour) {
      const double end = start + length(random_);
      if (end > 0) session(start, end);
      start = end;
    }
  }

 private:
  void session(double start, double end) {
    const bool isNew = chance(firstStarts);
    if (!store_ || isNew) store_ = std::make_shared<headless::MemoryDefaults>();
    if (!isNew) store_->setObject("kVeltoClientIdKey", "fleet");  // registered in an earlier start
    auto platform = Platform::install(store_);
    platform->setPagesFinishByThemselves(true);
    platform->mainQueue().setSecondsSince1970(headless::VirtualQueue::defaultStart + start);
    const auto now = [&, queue = platform.get()] { return start + queue->clock().monotonicSeconds(); };
    platform->urlSession().respond([](const NSURLRequest&) { return true; },
                                   [&, now](const NSURLRequest& request) { return answer(request, now()); });
    VeltoFramework::addVeltoKey("fleet");
    {
      headless::HostWindow window;
      auto delegate = std::make_shared<Delegate>();
      delegate->host = window.controller();
      auto banner = VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50,
                                                                VeltoBannerPositionBottom);
      banner->setEnableAutoRefresh(true);
      banner->load();
      constexpr std::chrono::seconds step(10);
      for (size_t seen = 0; now() + 10 < end;) {
        platform->advance(step);
        for (; seen < delegate->shown; ++seen)
          if (chance(tapsForAnAd)) VeltoTrackerManager::trackClickForBannerId("banner", "publisher", "order");
      }
      platform->advance(std::chrono::nanoseconds(static_cast<int64_t>(1e9 * std::max(0.0, end - now()))));
    }
    Platform::uninstall();
  }

  headless::Answer answer(const NSURLRequest& request, double time) {
    const std::string url = request.url.absoluteString();
    const bool isInstall = url.find("trk_install") != std::string::npos;
    const bool isTrack = isInstall || url.find("trk_click") != std::string::npos;
    if (time >= 0) {
      const bool again = isTrack && !sent_.insert(url).second;
      counts_.add(again ? SentAgain : isInstall ? Installs : isTrack ? Clicks : Ads, time);
    }
    if (isAway(time) && (isTrack || !adsStay_)) return headless::Answer::offline();
    if (isTrack) return {.body = "1"};
    return {.headers = {{"x-content", "html"}, {"x-width", "320"}, {"x-height", "50"}},
            .body = "<a href='velto://loadFinished'></a>"};
  }

  bool chance(double share) { return std::uniform_real_distribution<double>(0, 1)(random_) < share; }

  Counts& counts_;
  std::mt19937_64& random_;
  bool adsStay_;
  std::shared_ptr<headless::MemoryDefaults> store_;
  std::set<std::string> sent_;
};

// The highest of the sums over so many seconds each, as a number for one second.
double highest(const std::vector<uint32_t>& all, size_t from, size_t seconds) {
  double most = 0;
  for (size_t at = from; at < from + static_cast<size_t>(hour); at += seconds)
    most = std::max(most, std::accumulate(all.begin() + static_cast<std::ptrdiff_t>(at),
                                          all.begin() + static_cast<std::ptrdiff_t>(at + seconds), 0.0));
  return most / static_cast<double>(seconds);
}

void print(const Counts& counts, int clients, bool adsStay) {
  std::vector<uint32_t> all(counts.bySecond[Ads].size());
  for (const auto& kind : counts.bySecond)
    std::transform(kind.begin(), kind.end(), all.begin(), all.begin(), std::plus<>());
  rusage use{};
  getrusage(RUSAGE_SELF, &use);
  for (int number = 0; number < hours; ++number) {
    const auto from = static_cast<size_t>(number * hour);
    std::printf("{\"away\": \"%s\", \"hour\": \"%s\", \"clients\": %d", adsStay ? "tracking" : "all",
                std::array{"normal", "away", "after"}.at(static_cast<size_t>(number)), clients);
    for (size_t kind = 0; kind < Kinds; ++kind) {
      const auto begin = counts.bySecond.at(kind).begin() + static_cast<std::ptrdiff_t>(from);
      std::printf(", \"%s\": %.0f", names.at(kind),
                  std::accumulate(begin, begin + static_cast<std::ptrdiff_t>(hour), 0.0));
    }
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(from);
    std::printf(", \"mean\": %.3f, \"highest\": %.3f, \"highestOfAMinute\": %.3f, \"mostMemoryKiB\": %ld}\n",
                std::accumulate(begin, begin + static_cast<std::ptrdiff_t>(hour), 0.0) / hour,
                highest(all, from, 1), highest(all, from, 60), use.ru_maxrss);
  }
}

}  // namespace

int main(int count, char** words) {
  const int clients = count == 2 ? std::atoi(words[1]) : 0;
  if (clients < 1) {
    std::fprintf(stderr, "usage: %s CLIENTS\n", words[0]);
    return 2;
  }
  for (const bool adsStay : {false, true}) {
    Counts counts;
    std::mt19937_64 random(1);
    for (int i = 0; i < clients; ++i) Client(counts, random, adsStay).live();
    print(counts, clients, adsStay);
  }
}
