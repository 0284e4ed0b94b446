// The page scripts' modules in the engine's bare JavaScript: their own suites (the folders beside this file), and random
// sequences of a page's calls, the rich-media script before the library on the headless platform, against the model that
// the script's own suite uses.
#include "velto/platform/foundation/GMemory.h"

#include <jsc/jsc.h>

#include <fstream>
#include <sstream>

#include "../ui/UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;

class Scripts : public test::UITest {
 protected:
  void runBundle(const std::string& name) {
    std::ifstream file(VELTO_SCRIPT_SUITES "/" + name + ".suite.js");
    std::ostringstream text;
    text << file.rdbuf();
    run(text.str());
  }
  std::string run(const std::string& script) {
    const auto value = GPtr<JSCValue>::adopt(
        jsc_context_evaluate(context_, script.data(), static_cast<gssize>(script.size())));
    if (auto* exception = jsc_context_get_exception(context_)) {
      ADD_FAILURE() << jsc_exception_get_message(exception);
      jsc_context_clear_exception(context_);
    }
    const GText text(jsc_value_to_string(value));
    return text.get();
  }
  static std::string quoted(const std::string& text) { return writeJSON(text, false).value_or(""); }

  // What the page sends reaches the library, whose statements reach the page as tasks of their own.
  bool step() {
    const bool goesOn = run("veltoAdvance(5)") == "true";
    std::istringstream commands(run("veltoSent()"));
    for (std::string command; std::getline(commands, command);) page().navigate(command);
    platform->advance(5ms);
    return goesOn;
  }
  void settle() {
    while (step()) {
    }
    for (int i = 0; i < 30; ++i) step();  // what the library tells a tenth of a second later
  }

  GPtr<JSCContext> context_ = GPtr<JSCContext>::adopt(jsc_context_new());
};

TEST_F(Scripts, TheirOwnSuitesPass) {
  for (const char* suite : {"mraid", "measurement"}) {
    context_ = GPtr<JSCContext>::adopt(jsc_context_new());
    runBundle(suite);
    const auto report = run("veltoRunTests()");
    EXPECT_TRUE(report.ends_with(" cases passed") && !report.starts_with("0 ")) << report;
  }
}

TEST_F(Scripts, SequencesDoAsIfTheirCallsCameOneByOne) {
  runBundle("native");
  const auto owner = banner(VeltoBannerPositionTop);
  for (int seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    loadAd(*owner, markup("<script src='mraid.js'></script>"));
    run("veltoLoad()");
    page().answerScripts([this](const std::string& script) {
      if (script.starts_with("window.mraid.")) run("veltoHear(" + quoted(script) + ")");
      return JSON();
    });
    page().finish();
    settle();
    platform->application().opened.clear();
    run("veltoBegin(" + std::to_string(seed) + ")");
    settle();
    std::string opened;
    for (const auto& each : platform->application().opened) opened += quoted(each.url.absoluteString()) + ",";
    std::istringstream verdict(run("veltoVerdict([" + opened + "], [320, 50], [390, 763])"));
    std::string calls, came, expected;
    std::getline(verdict, calls);
    std::getline(verdict, came);
    std::getline(verdict, expected);
    EXPECT_EQ(came, expected) << seed << ": " << calls;
  }
}

}  // namespace
}  // namespace velto
