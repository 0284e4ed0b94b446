// The command line.
#include "preview/Arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>
#include <string_view>
#include <utility>

#include "common/CommandLine.h"
#include "preview/Findings.h"

namespace velto::preview {

namespace {

constexpr std::chrono::seconds longestVideoAdLoad{40};  // wrappers, and several files

double number(std::string_view text, const std::string& option) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || !(value > 0) || value > 100'000)
    throw UsageError(option + ": \"" + std::string(text) + "\" is no number above 0");
  return value;
}

CGSize size(const std::string& text, const std::string& option) {
  const auto cross = text.find('x');
  if (cross == std::string::npos) throw UsageError(option + ": \"" + text + "\" is not of the form WxH");
  return {number(std::string_view(text).substr(0, cross), option),
          number(std::string_view(text).substr(cross + 1), option)};
}

int whole(std::string_view text, const std::string& option) {
  const double value = number(text, option);
  if (value != static_cast<int>(value))
    throw UsageError(option + ": \"" + std::string(text) + "\" is not whole");
  return static_cast<int>(value);
}

std::chrono::milliseconds seconds(const std::string& text, const std::string& option) {
  return std::chrono::milliseconds(static_cast<int64_t>(number(text, option) * 1000));
}

Arguments::Shard shard(const std::string& text) {
  const auto slash = text.find('/');
  if (slash == std::string::npos) throw UsageError("--shard: \"" + text + "\" is not of the form K/N");
  const std::string_view all = text;
  const Arguments::Shard shard{whole(all.substr(0, slash), "--shard"),
                               whole(all.substr(slash + 1), "--shard")};
  if (shard.number > shard.count) throw UsageError("--shard: " + text + ": there is no such part");
  return shard;
}

// What the plays of a batch are given: all but what the batch itself is about.
std::vector<std::string> optionsOfEach(std::vector<std::string> given) {
  std::erase_if(given, [](const std::string& option) {
    const auto name = option.substr(0, option.find('='));
    return name == "--all" || name == "--jobs" || name == "--shard" || name == "--time-limit" ||
           name == "--report" || name == "--baseline" || name == "--vast";
  });
  return given;
}

// What the options that were given do not do for video ads; and what others are where they were not given.
void settleVideoAd(Arguments& arguments, const std::vector<std::string>& given) {
  const auto isGiven = [&](const std::string& name) {
    return std::any_of(given.begin(), given.end(),
                       [&](const auto& option) { return option == name || option.starts_with(name + "="); });
  };
  for (const char* option : {"--from-answer", "--position"})
    if (isGiven(option)) throw UsageError(std::string(option) + ": does not apply to video ads (--vast)");
  if (std::error_code none; isGiven("--ca") && !std::filesystem::is_regular_file(arguments.caFile, none))
    throw UsageError("--ca: " + arguments.caFile + ": cannot be read");
  constexpr double sixteenNinths = 16.0 / 9;
  if (!isGiven("--size"))
    arguments.size = {arguments.screen.width, std::floor(arguments.screen.width / sixteenNinths)};
  arguments.hasTimeout = isGiven("--timeout");
  if (!arguments.hasTimeout) arguments.timeout = longestVideoAdLoad;
}

void judge(const Arguments& arguments) {
  if (arguments.creatives.empty() && arguments.all.empty())
    throw UsageError(std::string("needs ") + (arguments.isMerge ? "FOLDER" : "CREATIVE") + " (see --help)");
  if (arguments.isMerge && !arguments.all.empty())
    throw UsageError("--merge: plays nothing, so there is no --all");
  if (arguments.isBatch() && arguments.report.empty())
    throw UsageError("many creatives leave what they found in a folder: needs --report (see --help)");
  if (arguments.isBatch() && !arguments.out.empty())
    throw UsageError("--out: the pictures of many creatives are in the folder of --report");
}

// Points, upright.
const std::map<std::string, CGSize>& screens() {
  static const std::map<std::string, CGSize> all{{"phone-small", {320, 568}},   {"phone", {390, 844}},
                                                 {"phone-large", {430, 932}},   {"phone-wide", {412, 915}},
                                                 {"tablet-small", {744, 1133}}, {"tablet", {820, 1180}},
                                                 {"tablet-large", {1024, 1366}}};
  return all;
}

std::vector<std::string> namesOf(const std::map<std::string, CGSize>& sizes) {
  std::vector<std::string> names;
  for (const auto& [name, size] : sizes) names.push_back(name);
  return names;
}

}  // namespace

std::optional<Arguments> parseArguments(const std::vector<std::string>& words) {
  Arguments arguments;
  tools::CommandLine line("velto-preview", "plays a creative as the library would, and tells what happens");
  line.arguments(
      "CREATIVE", "a file, or an http(s) URL; files beside it are served with it",
      [&](const auto& value) { arguments.creatives.push_back(value); }, tools::Word::Value::File);
  line.option(
      "--vast", "FILE|URL", "plays a document of video ads, in place of CREATIVE",
      [&](const auto& value) {
        arguments.creatives.push_back(value);
        arguments.videoAds.push_back(value);
      },
      tools::Word::Value::File);
  line.flag("--interstitial", "shows it as an interstitial (else as a banner)",
            [&] { arguments.interstitial = true; });
  line.option("--size", "WxH", "size of the banner in points (320x50), or of a video ad",
              [&](const auto& value) { arguments.size = size(value, "--size"); });
  line.option("--screen", "WxH", "size of the virtual screen in points (390x844)",
              [&](const auto& value) { arguments.screen = size(value, "--screen"); });
  line.option(
      "--steps", "FILE", "plays these steps, then ends",
      [&](const auto& value) { arguments.stepsFile = value; }, tools::Word::Value::File);
  line.option(
      "--report", "DIR", "writes a report there, for people and for programs",
      [&](const auto& value) { arguments.report = value; }, tools::Word::Value::Folder);
  line.flag("--strict", "fails for warnings and errors", [&] { arguments.failOn = "warning"; });
  line.option(
      "--all", "PATH", "plays all creatives of a folder, or of a list in a file",
      [&](const auto& value) { arguments.all.push_back(value); }, tools::Word::Value::File);
  line.rest();
  line.option("--position", "top|bottom", "where the banner stands (bottom)",
              [&](const auto& value) { arguments.atTop = value == "top"; }, tools::Word::Value::Text,
              {"top", "bottom"});
  line.option(
      "--out", "DIR", "folder for screenshots, stored pictures and the like",
      [&](const auto& value) { arguments.out = value; }, tools::Word::Value::Folder);
  line.option("--fail-on", "SEVERITY", "fails for findings from that severity on",
              [&](const auto& value) { arguments.failOn = value; }, tools::Word::Value::Text,
              {"notice", "warning", "error"});
  line.option("--allow", "ID", "leaves that finding out", [&](const auto& value) {
    checkId(value);
    arguments.allowed.insert(value);
  });
  line.option(
      "--baseline", "FILE", "findings.json of an earlier run, whose findings fail nothing",
      [&](const auto& value) { arguments.baseline = value; }, tools::Word::Value::File);
  line.option(
      "--device", "NAME", "a screen of that size, in place of --screen",
      [&](const auto& value) { arguments.screen = screens().at(value); }, tools::Word::Value::Text,
      namesOf(screens()));
  line.option("--set", "NAME=VALUE", "a variable of the steps: ${NAME}", [&](const auto& value) {
    const auto equals = value.find('=');
    if (equals == 0 || equals == std::string::npos)
      throw UsageError("--set: \"" + value + "\" is not of the form NAME=VALUE");
    arguments.variables[value.substr(0, equals)] = value.substr(equals + 1);
  });
  line.option(
      "--record", "FILE", "writes as steps what is done to the ad by hand",
      [&](const auto& value) { arguments.recordFile = value; }, tools::Word::Value::File);
  line.option(
      "--ca", "FILE", "certificate authorities (PEM) to trust a video ad's servers by, not the system's",
      [&](const auto& value) { arguments.caFile = std::filesystem::absolute(value).string(); },
      tools::Word::Value::File);
  line.flag("--from-answer",
            "CREATIVE is a recorded answer of an ad server (JSON): headers, mediation and all",
            [&] { arguments.isAnswer = true; });
  line.flag("--no-sandbox",
            "lets the web engine run without its sandbox, where that cannot be: not for ads of strangers",
            [&] { arguments.noSandbox = true; });
  line.option("--timeout", "SECONDS",
              "longest wait for the ad, and for a step without MS (10; for video ads 40)",
              [&](const auto& value) { arguments.timeout = seconds(value, "--timeout"); });
  line.option("--jobs", "N", "so many of them at once (one for each processor)",
              [&](const auto& value) { arguments.jobs = whole(value, "--jobs"); });
  line.option("--time-limit", "SECONDS", "after which one of them is ended (120)",
              [&](const auto& value) { arguments.timeLimit = seconds(value, "--time-limit"); });
  line.option("--shard", "K/N", "only each N-th of them, from the K-th on",
              [&](const auto& value) { arguments.shard = shard(value); });
  line.flag("--merge", "joins the reports in the folders named to one", [&] { arguments.isMerge = true; });
  line.flag("--explain", "by itself: prints what each finding means",
            [] { throw UsageError("--explain stands by itself"); });
  line.note(
      "Standard output is JSON Lines, one object an event, \"t\" in milliseconds. Without --steps the window "
      "stays open until it is closed; without a display the program starts one of its own and ends once the "
      "ad has loaded, or the video ad has ended. Video ads tell their servers what happens: impressions are "
      "counted.");
  line.section("STEPS", R"(A file of steps holds one a line:

  wait MS                       wait-for eval JS
  wait-for state NAME [MS]      wait-for event NAME [MS]
  tap X Y                       tap-element CSS
  long-press X Y [MS]           swipe X Y X Y
  scroll X Y CLICKS             type TEXT
  eval JS                       rotate portrait|landscape
  hide                          show
  skip
  volume FRACTION               close
  offline                       online
  slow 3g|2g                    clock +30s
  screenshot NAME [compare FILE [PERCENT]]
  press BUTTON                  picture NAME
  include FILE                  set NAME VALUE
  from-here                     expect count EVENT N
  expect state NAME             expect placement NAME
  expect open URL               expect command NAME [ARGS]
  expect frame X Y W H          expect eval JS
  expect no finding ID)");
  line.exitCodes("0; 1 when an expectation failed or the ad did not load; 2 when something given is wrong");
  if (words == std::vector<std::string>{"--explain"}) {
    std::cout << findingsGuide();
    return std::nullopt;
  }
  std::vector<std::string> given;
  if (!line.read(words, &given)) return std::nullopt;
  judge(arguments);
  if (arguments.isBatch()) {
    arguments.ofEach = optionsOfEach(std::move(given));
    return arguments;
  }
  arguments.creative = arguments.creatives.front();
  arguments.isVideoAd = !arguments.videoAds.empty();
  if (arguments.isVideoAd)
    settleVideoAd(arguments, given);
  else if (!arguments.caFile.empty())
    throw UsageError("--ca: is for video ads (--vast)");
  if (!arguments.report.empty() && arguments.out.empty())
    arguments.out = (std::filesystem::path(arguments.report) / "pictures").string();
  return arguments;
}

}  // namespace velto::preview
