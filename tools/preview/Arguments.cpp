// The command line.
#include "preview/Arguments.h"

#include <charconv>
#include <string_view>

namespace velto::preview {

const char helpText[] = R"(velto-preview - plays a creative as the library would, and tells what happens

usage: velto-preview [options] CREATIVE

  CREATIVE                a file, or an http or https URL; files beside it are served with it
  --interstitial          show it as an interstitial (default: as a banner)
  --size WxH              size of the banner in points (default: 320x50)
  --screen WxH            size of the virtual screen in points (default: 390x844)
  --position top|bottom   where the banner stands (default: bottom)
  --steps FILE            play these steps, then end; one a line:
                            wait MS
                            wait-for state NAME [MS]      wait-for event NAME [MS]
                            tap X Y                       tap-element CSS
                            eval JS                       rotate portrait|landscape
                            hide                          show
                            volume FRACTION               close
                            screenshot NAME
                            expect state NAME             expect placement NAME
                            expect frame X Y W H          expect count EVENT N
                            expect eval JS
  --out DIR               folder for screenshots, stored pictures and the like
  --timeout SECONDS       longest wait for the ad, and for each wait-for without MS (default: 10)
  --help

Standard output is JSON Lines, one object an event, "t" in milliseconds. Without --steps the window stays open until
it is closed; without a display the program starts one of its own and ends once the ad has loaded.

Exit codes: 0; 1 when an expectation failed or the ad did not load; 2 when something given is wrong.
)";

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

Arguments parseArguments(int count, char** words) {
  Arguments arguments;
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    if (word == "--help") {
      arguments.help = true;
      return arguments;
    }
    if (word == "--interstitial") {
      arguments.interstitial = true;
      continue;
    }
    if (word.rfind("--", 0) != 0) {
      if (!arguments.creative.empty()) throw UsageError("one creative at a time (see --help)");
      arguments.creative = word;
      continue;
    }
    const auto value = [&]() -> std::string {
      if (++i == count || !*words[i]) throw UsageError(word + ": needs a value (see --help)");
      return words[i];
    };
    if (word == "--size")
      arguments.size = size(value(), word);
    else if (word == "--screen")
      arguments.screen = size(value(), word);
    else if (word == "--steps")
      arguments.stepsFile = value();
    else if (word == "--out")
      arguments.out = value();
    else if (word == "--timeout")
      arguments.timeout = std::chrono::milliseconds(static_cast<int64_t>(number(value(), word) * 1000));
    else if (word == "--position") {
      const auto position = value();
      if (position != "top" && position != "bottom") throw UsageError(word + ": top or bottom");
      arguments.atTop = position == "top";
    } else
      throw UsageError("unknown option \"" + word + "\" (see --help)");
  }
  if (arguments.creative.empty()) throw UsageError("which creative? (see --help)");
  return arguments;
}

}  // namespace velto::preview
