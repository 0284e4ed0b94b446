// Plays the demo by itself: shows each case, waits for what must happen, looks at the pixels, takes pictures,
// clicks on an ad as a person would. Main thread; needs an X11 display and xdotool.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Camera.h"
#include "LinkTrap.h"
#include "Stage.h"

namespace demo {

class Tour {
 public:
  Tour(Stage& stage, const LinkTrap& links, std::filesystem::path out);

  // Returns what did not happen; nothing missing is success. Runs the main loop meanwhile.
  std::vector<std::string> run();

 private:
  void showAllSizes();
  void slideIn(const std::string& name, bool overshoots);
  void refresh();
  void fail();
  void tap();
  void remove();

  void load(const std::string& name);
  // Runs the main loop until the condition holds; notes `what` as missing when it does not in time.
  bool expect(const std::string& what, const std::function<bool()>& condition);
  bool expectShown(const std::string& name);
  void photograph(const std::string& name);
  void photograph(const std::string& name, const Picture& picture);
  void click(velto::CGPoint point);

  Stage& stage_;
  const LinkTrap& links_;
  std::filesystem::path out_;
  Camera camera_;
  std::vector<std::string> missing_;
};

}  // namespace demo
