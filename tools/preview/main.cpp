// velto-preview: plays one creative through the library's whole road, from a server in this process to the
// web view.
#include <algorithm>
#include <string>
#include <vector>

#include "common/Supervise.h"
#include "preview/Arguments.h"
#include "preview/Batch.h"
#include "preview/Play.h"
#include "preview/Steps.h"
#include "preview/Surroundings.h"

namespace velto::preview {
namespace {

bool touches(const Step& step) {
  const auto verbs = {"tap", "tap-element", "long-press", "swipe", "scroll", "type"};
  return std::find(verbs.begin(), verbs.end(), step.verb) != verbs.end();
}

int run(Arguments arguments) {
  if (arguments.isMerge) return mergeReports(arguments.creatives, arguments.report);
  if (arguments.isBatch()) return playAll(arguments);
  const auto steps =
      arguments.stepsFile.empty() ? std::vector<Step>() : readSteps(arguments.stepsFile, arguments.variables);
  if (arguments.isVideoAd) refuseStepsOfPages(steps, arguments.stepsFile);
  arguments.expectsFindings =
      std::any_of(steps.begin(), steps.end(), [](const Step& step) { return step.verb == "expect no"; });
  const bool taps = std::any_of(steps.begin(), steps.end(), touches) ||
                    (steps.empty() && arguments.examines() && !arguments.isVideoAd);
  const auto handed = tools::handedDown();
  if (!handed) tools::holdEnds();  // what is made from here on is tidied
  const auto surroundings = handed ? Surroundings(*handed) : Surroundings(arguments.out, taps);
  if (!handed) tools::supervise(surroundings.text(), [&surroundings] { surroundings.remove(); });
  if (arguments.noSandbox) leaveSandbox();
  return Play(arguments, steps, surroundings).run();
}

}  // namespace
}  // namespace velto::preview

int main(int count, char** words) {
  return velto::tools::runTool("velto-preview", count, words, [](const std::vector<std::string>& call) {
    const auto arguments = velto::preview::parseArguments(call);
    return arguments ? velto::preview::run(*arguments) : 0;
  });
}
