// Plays the demo by itself: shows each case, waits for what must happen, looks at the pixels, takes pictures,
// clicks and presses keys as a person would. Main thread; needs an X11 display and xdotool.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Camera.h"
#include "Hand.h"
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
  void expectOpened(const std::string& name, const std::string& url);  // the last link so far

  // TourRichMedia.cpp
  void showRichMedia();
  void expandAndClose(const std::string& name);
  void resizeAndClose();
  void measure();
  void film();

  void coverSlot();  // TourCovered.cpp
  void videoAd();    // TourVideoAd.cpp
  void inspect();    // TourInspector.cpp

  // TourInterstitials.cpp
  void showInterstitials();
  void countdown();
  void autoShow();
  void comeIn(const std::string& name);
  void reload();
  void anotherNetwork();
  void open(const std::string& name);
  void expectGone(const std::string& name, int times);
  void expectHeard(const std::string& name, const std::vector<std::string>& heard);
  velto::CGRect wholeContent() const;
  velto::CGRect closeButton() const;
  velto::CGRect card() const;
  bool canClose() const;
  std::optional<Picture::Columns> covered(const Picture& picture) const;

  Stage& stage_;
  const LinkTrap& links_;
  std::filesystem::path out_;
  Camera camera_;
  Hand hand_;
  Color bareRow_ = 0;  // of the row by which an interstitial's place is seen
  std::vector<std::string> missing_;
};

}  // namespace demo
