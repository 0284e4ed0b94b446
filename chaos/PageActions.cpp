// What pages, their engine and other networks' adapters do.
#include <array>

#include "World.h"

namespace velto::chaos {
namespace {

constexpr int pages = 8;

// Most of the commands that there are, good and bad.
const std::array commands{
    "expand",
    "close",
    "resize",
    "unload",
    "open?url=https%3A%2F%2Fshop.example%2F",
    "open?url=tel%3A123",
    "expand?url=https%3A%2F%2Fads.example%2Ftwo",
    "setResizeProperties?p=%7B%22width%22%3A200%2C%22height%22%3A100%2C%22offsetX%22%3A0%2C%22offsetY%22%3A0%"
    "7D",
    "setResizeProperties?p=%7B%22width%22%3A1e9%2C%22height%22%3A-1%7D",
    "setOrientationProperties?p=%7B%22forceOrientation%22%3A%22landscape%22%7D",
    "setOrientationProperties?p=%7B%22allowOrientationChange%22%3Afalse%7D",
    "setExpandProperties?p=%7B%22useCustomClose%22%3Atrue%7D",
    "playVideo?url=https%3A%2F%2Fvideo.example%2Fa.mp4",
    "storePicture?url=https%3A%2F%2Fads.example%2Fa.png",
    "createCalendarEvent?p=%7B%22description%22%3A%22d%22%2C%22start%22%3A%222030-01-01T10%3A00%3A00Z%22%7D",
    "nonsense?p=%7B",
};
constexpr const char* markupOfPages =
    "<a href='https://c.example/?u=a%26ord%3Do1%26veltos%3Db1%26veltop%3Dp1'>ad</a>";
constexpr std::array endings{NSErrorCause::ProcessHung, NSErrorCause::ProcessCrashed,
                             NSErrorCause::ProcessOutOfMemory, NSErrorCause::ProcessEnded};

void answerScripts(headless::RecordingWebView& page) {
  page.answerScripts([](const std::string& script) -> std::optional<JSON> {
    if (script == "document.body.innerHTML") return JSON(markupOfPages);
    if (script == "navigator.userAgent") return JSON("Engine/1.0");
    if (script.find("throw") != std::string::npos) return std::nullopt;
    return JSON();
  });
}

// A page says nothing before it was given, nor without its process.
bool runs(const headless::RecordingWebView* page) {
  return page && page->hasProcess() && !page->loads().empty();
}

void finish(World& world, const Numbers& n) {
  auto* page = world.page(n[0]);
  if (!runs(page)) return;
  answerScripts(*page);
  page->finish();
}

void navigate(World& world, int number, const std::string& url,
              WKNavigationType type = WKNavigationType::Other) {
  auto* page = world.page(number);
  if (runs(page)) page->navigate(url, type);
}

// A finger on a link of the page, if the page is where a finger can reach it.
void tapLink(World& world, const Numbers& n) {
  static const std::array links{"https://shop.example/", "shop.example", "tel:123",
                                "https://shop.example/#a"};
  auto* page = world.page(n[0]);
  if (!runs(page)) return;
  for (int number = 0; number < World::windows; ++number) {
    const auto& window = world.window(number);
    if (!window || !page->webView().isDescendantOfView(window->view())) continue;
    world.willTouch();
    window->tapLink(*page, links.at(static_cast<size_t>(n[1])));
    return;
  }
}

void cost(World& world, const Numbers& n) {
  auto* page = world.page(n[0]);
  if (!page) return;
  auto use = page->use();
  use.process = 1 + static_cast<uint64_t>(n[0]);
  use.processorSeconds = use.processorSeconds.value_or(0) + 10 * n[1];
  use.networkBytes = use.networkBytes.value_or(0) + (static_cast<uint64_t>(n[1]) << 20);
  use.memoryBytes = static_cast<uint64_t>(n[1]) << 27;
  page->setUse(use);
}

}  // namespace

std::vector<Action> pageActions() {
  return {
      {"page-finish", 40, {pages}, "a page has loaded, as its engine says", finish},
      {"page-loaded",
       40,
       {pages},
       "a page says that it has loaded",
       [](World& world, const Numbers& n) { navigate(world, n[0], "velto://loadFinished"); }},
      {"page-gives-up",
       4,
       {pages},
       "a page wants to be taken away",
       [](World& world, const Numbers& n) { navigate(world, n[0], "velto://failLoad"); }},
      {"page-fails",
       4,
       {pages},
       "a page cannot be loaded",
       [](World& world, const Numbers& n) {
         if (auto* page = world.page(n[0])) page->fail({"WebKitNetworkError", 399, "no page"});
       }},
      {"page-command",
       50,
       {pages, static_cast<int>(commands.size())},
       "a command of rich media",
       [](World& world, const Numbers& n) {
         navigate(world, n[0], std::string("mraid://") + commands.at(static_cast<size_t>(n[1])));
       }},
      {"page-link", 10, {pages, 4}, "a finger on a link", tapLink},
      {"page-goes",
       4,
       {pages, 2},
       "a page goes elsewhere by itself, or says it was a link",
       [](World& world, const Numbers& n) {
         navigate(world, n[0], "https://elsewhere.example/",
                  n[1] == 0 ? WKNavigationType::Other : WKNavigationType::LinkActivated);
       }},
      {"page-cost", 4, {pages, 8}, "what a page has cost by now", cost},
      {"end-process",
       6,
       {pages, static_cast<int>(endings.size())},
       "a web process crashes, runs out of memory, ends",
       [](World& world, const Numbers& n) {
         if (auto* page = world.page(n[0]))
           world.system().views().endProcess(*page, endings.at(static_cast<size_t>(n[1])));
       }},
      {"end-process-at",
       8,
       {int(VeltoTimelineKind::Weighed) + 1},
       "the same as soon as a load has that entry",
       [](World& world, const Numbers& n) { world.killAt = static_cast<VeltoTimelineKind>(n[0]); }},
      {"short-of-memory",
       2,
       {},
       "all web processes end",
       [](World& world, const Numbers&) { world.system().views().runShortOfMemory(); }},
      {"engine",
       1,
       {8},
       "no page can be shown (0), or all can",
       [](World& world, const Numbers& n) {
         auto& views = world.system().views();
         if (n[0] > 0) return views.mendWebContent();
         views.failWebContent({"org.example", 1, "no engine", NSErrorCause::EngineUnavailable});
       }},
      {"adapter",
       30,
       {4, 6},
       "a network announces, fails, comes up, goes, was pressed, was closed",
       [](World& world, const Numbers& n) {
         world.touchedNow = true;
         world.network->act(n[0], n[1]);
       }},
      {"adapters",
       8,
       {Network::manners, 2, 4},
       "how networks answer, on which thread, and what they lack",
       [](World& world, const Numbers& n) {
         world.network->manner = static_cast<Network::Manner>(n[0]);
         world.network->thread = static_cast<Thread>(n[1]);
         world.network->hasView = n[2] != 1;
         world.network->takesRoot = n[2] != 2;
       }},
      {"volume",
       3,
       {3},
       "the output volume",
       [](World& world, const Numbers& n) {
         world.system().audioSession().setOutputVolume(static_cast<float>(n[0]) / 2);
       }},
  };
}

}  // namespace velto::chaos
