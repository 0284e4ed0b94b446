// How a play among many can end that its own process cannot tell any more (BatchReport.h).
#include <array>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

constexpr std::array playTable{
    Rule{"play-hangs", Severity::Error, "The play did not come to its end within its time, and was ended.",
         "An ad that keeps the page or the program busy does the same on people's devices.",
         "Look at the last of its events. If its steps only take long, raise --time-limit.",
         "A play that ends within --time-limit.", nullptr},
    Rule{"play-crashes", Severity::Error, "The program that played the creative has crashed.",
         "No creative may bring an application down.",
         "Play it alone, look at its errors.txt, and report it with the creative.",
         "A page whose own process ends, which is \"crash\".", nullptr},
    Rule{"play-refused", Severity::Error, "The creative could not be played at all.",
         "The file, its steps or the options are wrong, or the machine lacks what a play needs.",
         "The evidence tells what the program said.", "An ad that fails while it is played.", nullptr},
};

}  // namespace

std::span<const Rule> playRules() {
  return playTable;
}

}  // namespace velto::preview
