// The command line.
#include "preview/Arguments.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "common/CommandLine.h"

namespace velto::preview {

namespace {

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

}  // namespace

std::optional<Arguments> parseArguments(const std::vector<std::string>& words) {
  Arguments arguments;
  tools::CommandLine line("velto-preview", "plays a creative as the library would, and tells what happens");
  line.argument(
      "CREATIVE", "a file, or an http(s) URL; files beside it are served with it",
      [&](const auto& value) { arguments.creative = value; }, tools::Word::Value::File);
  line.flag("--interstitial", "shows it as an interstitial (else as a banner)",
            [&] { arguments.interstitial = true; });
  line.option("--size", "WxH", "size of the banner in points (320x50)",
              [&](const auto& value) { arguments.size = size(value, "--size"); });
  line.option("--screen", "WxH", "size of the virtual screen in points (390x844)",
              [&](const auto& value) { arguments.screen = size(value, "--screen"); });
  line.option("--position", "top|bottom", "where the banner stands (bottom)",
              [&](const auto& value) { arguments.atTop = value == "top"; }, tools::Word::Value::Text,
              {"top", "bottom"});
  line.option(
      "--steps", "FILE", "plays these steps, then ends",
      [&](const auto& value) { arguments.stepsFile = value; }, tools::Word::Value::File);
  line.option(
      "--out", "DIR", "folder for screenshots, stored pictures and the like",
      [&](const auto& value) { arguments.out = value; }, tools::Word::Value::Folder);
  line.option("--timeout", "SECONDS", "longest wait for the ad, and for a step without MS (10)",
              [&](const auto& value) {
                arguments.timeout =
                    std::chrono::milliseconds(static_cast<int64_t>(number(value, "--timeout") * 1000));
              });
  line.note(
      "Standard output is JSON Lines, one object an event, \"t\" in milliseconds. Without --steps the window "
      "stays open until it is closed; without a display the program starts one of its own and ends once the "
      "ad has "
      "loaded.");
  line.section("STEPS", R"(A file of steps holds one a line:

  wait MS
  wait-for state NAME [MS]      wait-for event NAME [MS]
  tap X Y                       tap-element CSS
  eval JS                       rotate portrait|landscape
  hide                          show
  volume FRACTION               close
  screenshot NAME
  expect state NAME             expect placement NAME
  expect frame X Y W H          expect count EVENT N
  expect eval JS)");
  line.exitCodes("0; 1 when an expectation failed or the ad did not load; 2 when something given is wrong");
  if (!line.read(words)) return std::nullopt;
  return arguments;
}

}  // namespace velto::preview
