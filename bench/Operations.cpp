// Single operations of the library on the headless platform, each beside the same result made by hand. A
// result that differs ends the benchmark, so neither side can do less than the other.
#include "velto/headless/VeltoHeadless.h"
#include "velto/network/VeltoTaskRequest.h"
#include "velto/timeline/LoadRecord.h"
#include "velto/velto.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace velto {
namespace {

using nlohmann::json;

// --- building one ad request

std::optional<NSURLRequest> libraryRequest() {
  VeltoSettings settings;
  settings.age = 34;
  settings.gender = VeltoGenderFemale;
  settings.keywords = {"garden", "tools", "spring & summer"};
  return VeltoTaskRequest::requestFor(VeltoAdTypeBanner, VeltoBannerSize320x50, settings);
}

// All values at hand, as in a program that gathered them once; the library gathers them from the platform for
// each request.
struct Values {
  std::vector<std::pair<std::string, json>> body;
  std::vector<std::pair<std::string, std::string>> query;
};

void appendEscaped(std::string& text, std::string_view part) {
  constexpr char digits[] = "0123456789ABCDEF";
  constexpr std::string_view kept = "-._~!$'()*+,;:@/?";
  for (const char c : part) {
    if (g_ascii_isalnum(c) || kept.find(c) != std::string_view::npos) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
}

std::pair<std::string, std::string> requestByHand(const Values& values) {
  std::string url = "https://ads.velto.example/sdk/v3/req";
  char separator = '?';
  for (const auto& [name, value] : values.query) {
    url += std::exchange(separator, '&');
    appendEscaped(url, name);
    url += '=';
    appendEscaped(url, value);
  }
  json body = json::object();
  for (const auto& [name, value] : values.body) body[name] = value;
  return {std::move(url), body.dump(2)};
}

void BM_RequestByLibrary(benchmark::State& state) {
  const auto platform = headless::Platform::install();
  VeltoFramework::addVeltoKey("bench");
  for (auto _ : state) {
    auto request = libraryRequest();
    benchmark::DoNotOptimize(request);
  }
  headless::Platform::uninstall();
}
BENCHMARK(BM_RequestByLibrary);

void BM_RequestByHand(benchmark::State& state) {
  const auto platform = headless::Platform::install();
  VeltoFramework::addVeltoKey("bench");
  VeltoURL::setServerNames({"ads.velto.example", "", ""});
  const auto wanted = libraryRequest();
  Values values;
  const json wantedBody = json::parse(wanted->httpBody.value());
  for (const auto& [name, value] : wantedBody.items()) values.body.emplace_back(name, value);
  for (auto& item : VeltoTaskRequest::queryParameterItemsFor(VeltoAdTypeBanner, VeltoBannerSize320x50))
    values.query.emplace_back(item.name, item.value.value());
  const auto [url, body] = requestByHand(values);
  if (url != wanted->url.absoluteString() || json::parse(body) != wantedBody)
    state.SkipWithError("the request made by hand differs from the library's");
  for (auto _ : state) {
    auto request = requestByHand(values);
    benchmark::DoNotOptimize(request);
  }
  headless::Platform::uninstall();
}
BENCHMARK(BM_RequestByHand);

// --- what a load writes down of itself, with nobody who looks on

void BM_TimelineByLibrary(benchmark::State& state) {
  using Kind = VeltoTimelineKind;
  const auto platform = headless::Platform::install();
  {
    PlacementRecord placement("home");
    for (auto _ : state) {
      const auto load = placement.begin(VeltoAskedBy::Application);
      const LoadScope scope(load);
      load->add(Kind::RequestBuilt, VeltoBytes{1500});
      load->addAt(Kind::Sent, platform->clock().monotonicSeconds(), VeltoConnection::Reused);
      load->addAt(Kind::FirstByte, platform->clock().monotonicSeconds());
      load->add(Kind::Answered, VeltoAnswer{200, VeltoAnswerClass::Mediation});
      for (const char* network : {"VeltoAdmobBannerAdapter", "VeltoMonetizeBannerAdapter"}) {
        load->add(Kind::NetworkTried, VeltoNetworkTry{network, {}});
        load->add(Kind::NetworkPassedOver, VeltoNetworkTry{network, VeltoAdEndReason::AdapterUnknown});
      }
      load->add(Kind::Resolved, VeltoAdKind::RichMedia);
      load->add(Kind::WebProcess, VeltoWebProcess::Warm);
      for (const auto kind : {Kind::MarkupGiven, Kind::PageLoaded, Kind::LoadFinished, Kind::Animated})
        load->add(kind, {});
      for (const auto media : {VeltoRichMedia::Default, VeltoRichMedia::Expanded, VeltoRichMedia::Default})
        load->add(Kind::RichMedia, media);
      for (int percent = 0; percent <= 100; percent += 20) load->add(Kind::Visible, VeltoShare{percent});
      load->end(VeltoAdEndReason::Refreshed);
    }
    if (placement.timelines().back().entries.size() != 24) state.SkipWithError("an entry is missing");
  }
  headless::Platform::uninstall();
}
BENCHMARK(BM_TimelineByLibrary);

}  // namespace
}  // namespace velto

BENCHMARK_MAIN();
