// Plays the steps, one after the other, on the main loop.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "preview/Screen.h"
#include "preview/Steps.h"

namespace velto::preview {

// Runs the main loop for that long, or until the condition holds; whether it held.
void runFor(std::chrono::milliseconds time);
bool runUntil(std::chrono::milliseconds atMost, const std::function<bool()>& condition);

class Player {
 public:
  Player(Screen& screen, Journal& journal, const Arguments& arguments);

  // Whether everything that was expected came true. Stops at the first step that failed.
  bool play(const std::vector<Step>& steps);
  // Waits until the ad has loaded; whether it did.
  bool awaitLoad();

 private:
  // What went wrong, or nothing.
  using Outcome = std::optional<std::string>;
  Outcome play(const Step& step);
  Outcome waitFor(const std::function<bool()>& condition, const Step& step);
  Outcome tapElement(const std::string& selector);
  Outcome eval(const std::string& script, bool mustBeTrue);
  Outcome screenshot(const std::string& name);
  Outcome expectFrame(const Step& step);
  std::optional<JSON> evaluate(const std::string& script, std::string* error);

  Screen& screen_;
  Journal& journal_;
  const Arguments arguments_;
};

}  // namespace velto::preview
