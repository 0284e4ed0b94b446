// What servers and the network between answer.
#include <array>

#include "World.h"

namespace velto::chaos {
namespace {

using headless::Answer;
using namespace std::chrono_literals;

constexpr size_t mostWaiting = 8;  // answers
constexpr const char* page =
    "<html><body><a href='https://shop.example/'>ad</a><!-- velto://loadFinished --></body></html>";
constexpr const char* richPage = "<script src='mraid.js'></script>rich";
constexpr const char* instructions =
    R"({"conn_id":"1","timeout":5,"mediation":[{"cn":"Nobody"},{"cn":"VeltoAdmobBannerAdapter"},)"
    R"({"cn":"VeltoAdmobInterstitialAdapter"},{"cn":"VeltoPassbackBannerAdapter","e":{"data":"PHA+"}},)"
    R"({"cn":"VeltoPassbackInterstitialAdapter","e":{"data":"PHA+"}},{"cn":"VeltoPassbackBannerAdapter"}]})";

Answer filled(const char* kind, std::string body, std::vector<HeaderFields::Field> more = {}) {
  Answer answer{.headers = {{"x-content", kind}, {"x-width", "320"}, {"x-height", "50"}},
                .body = std::move(body)};
  answer.headers.insert(answer.headers.end(), more.begin(), more.end());
  return answer;
}

constexpr const char* otherNetworks =
    R"({"mediation":[{"cn":"VeltoAdmobBannerAdapter"},{"cn":"VeltoAdmobInterstitialAdapter"}]})";

constexpr const char* otherScreens =
    R"({"mediation":[{"cn":"VeltoAdmobInterstitialAdapter"},{"cn":"Nobody"}]})";

// What a server may say, and what comes instead.
std::vector<Answer> answersThereAre() {
  std::vector<Answer> all{
      filled("html", page),
      filled("html", richPage),
      filled("mediation", instructions),
      filled("mediation", otherNetworks),
      filled("mediation", otherScreens),
      filled("html", page, {{"x-fst", "3000"}}),
      filled("html", page, {{"x-ttl", "1"}}),
      filled("html", richPage, {{"x-ttl", "-5"}, {"x-fst", "1e300"}}),
      {.headers = {{"x-content", "html"}}, .body = page},
      {.headers = {{"x-content", "html"}, {"x-width", "1e18"}, {"x-height", "-7"}}, .body = page},
      filled("html", "<a href='velto://noFillAd'></a>"),
      filled("html", ""),
      filled("html", std::string("\xff\xfe\0", 3)),
      filled("no_fill", ""),
      filled("vast", "<VAST/>"),
      filled("unheard-of", page),
      {.status = 204},
      {.status = 500},
      {.status = 404, .body = page},
      {.status = 302, .headers = {{"Location", "/moved"}}},
      {.status = 307, .headers = {{"Location", "http://plain.example/sdk/"}}},
      {.isHTTP = false},
      Answer::withoutData(),
      Answer::offline(),
      Answer::untrusted(),
      Answer::captivePortal(),
      Answer::silence(),
      Answer::failure({"NSURLErrorDomain", -1003, "no such name"}),
      Answer::failure({"NSURLErrorDomain", -1005, "the connection was lost"}),
      Answer::failure({"NSURLErrorDomain", -1103, "too large"}),
      Answer::failure({"NSURLErrorDomain", -1004, "refused"}),
      Answer::failure({"NSURLErrorDomain", -1200, "no TLS"}),
      Answer::failure({"other", 1, "whatever"}),
      filled("mediation", R"({"mediation":[]})"),
      {.body = "GIF89a"},
  };
  return all;
}

void answer(World& world, const Numbers& n) {
  static const auto all = answersThereAre();
  if (world.server.next.size() >= mostWaiting) return;
  auto next = all.at(static_cast<size_t>(n[0]));
  next.delay += 200ms * (n[1] * n[1]);
  world.server.next.push_back(std::move(next));
}

// A server that did not say how long its answer is, and a connection that ended early.
void answerCut(World& world, const Numbers& n) {
  if (world.server.next.size() >= mostWaiting) return;
  const std::array whole{filled("html", page), filled("html", richPage), filled("mediation", instructions)};
  auto next = whole.at(static_cast<size_t>(n[0]));
  next.body->resize(std::min(next.body->size(), static_cast<size_t>(n[1])));
  world.server.next.push_back(std::move(next));
}

constexpr int longestInstructions = 400;

}  // namespace

std::vector<Action> serverActions() {
  return {
      {"answer",
       60,
       {35, 5},
       "what is answered next (the first eight are ads), after 0 to 3.2 seconds",
       answer},
      {"answer-ad", 60, {8, 3}, "the same, ads alone", answer},
      {"answer-cut", 16, {3, longestInstructions}, "an ad that ends after so many bytes", answerCut},
      {"answer-tracks",
       8,
       {trackAnswers},
       "what tracks are answered from now on: see TrackAnswer",
       [](World& world, const Numbers& n) { world.server.tracks = static_cast<TrackAnswer>(n[0]); }},
      {"network",
       4,
       {4},
       "no network, a wired one, a mobile one, one that cannot be read",
       [](World& world, const Numbers& n) {
         const std::array<std::optional<uint32_t>, 4> flags{0, SCNetworkReachabilityFlagsReachable,
                                                            2 | 262144, std::nullopt};
         world.system().network().setFlags(flags.at(static_cast<size_t>(n[0])));
       }},
      {"tracking",
       3,
       {4},
       "whether the person lets applications track",
       [](World& world, const Numbers& n) { world.system().trackingManager().authorizationStatus = n[0]; }},
      {"place",
       3,
       {3},
       "the place is not told, not known, known",
       [](World& world, const Numbers& n) {
         world.system().location().servicesEnabled = n[0] > 0;
         world.system().location().lastKnown.reset();
         if (n[0] == 2) world.system().location().lastKnown = CLLocation{52.512345, 13.412345, 5, 1};
       }},
  };
}

}  // namespace velto::chaos
