// Plays the steps, one after the other, on the main loop.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "preview/Screen.h"
#include "preview/Steps.h"

namespace velto::preview {

// Runs the main loop for that long, or until the condition holds; whether it held.
void runFor(std::chrono::milliseconds time);
bool runUntil(std::chrono::milliseconds atMost, const std::function<bool()>& condition);

class Window;

class Player {
 public:
  Player(Screen& screen, Journal& journal, const Arguments& arguments);

  // Who knows the findings so far; without it steps that expect none fail.
  std::function<bool(const std::string& id)> hasFinding;

  // The window beside the device, if there is one.
  Window* window = nullptr;

  // Whether everything that was expected came true. Stops at the first step that failed.
  bool play(const std::vector<Step>& steps);
  // Waits until the ad has loaded; whether it did.
  bool awaitLoad();

 private:
  // What went wrong, or nothing.
  using Outcome = std::optional<std::string>;
  Outcome play(const Step& step);
  Outcome waitFor(const std::function<bool()>& condition, const Step& step);
  Outcome touch(const Step& step);
  Outcome change(const Step& step);
  Outcome expect(const Step& step);
  Outcome tapElement(const std::string& selector);
  Outcome tapOnAd(CGPoint inPage);
  Outcome setOffline(bool offline);
  Outcome moveClock(std::chrono::milliseconds by);
  Outcome expectEntry(const std::string& kind, const std::function<bool(const JSON::Object&)>& fits,
                      const std::string& key);
  Outcome eval(const std::string& script, bool mustBeTrue);
  Outcome screenshot(const std::vector<std::string>& words, GtkWindow* beside = nullptr);
  Outcome pictureOfAll(const Step& step);
  Outcome waitForEval(const std::string& script);
  Outcome expectFrame(const Step& step);
  std::optional<JSON> evaluate(const std::string& script, std::string* error);

  Screen& screen_;
  Journal& journal_;
  const Arguments arguments_;
  std::shared_ptr<std::vector<JSON::Object>>
      told_;  // of pages' commands and what was opened, since "from-here"
};

}  // namespace velto::preview
