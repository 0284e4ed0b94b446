// How the network Driftwood looks: a banner and a full screen, drawn with views, buttons and constraints.
// Main thread.
#pragma once

#include <velto/platform/ui/UIButton.h>
#include <velto/platform/ui/UIViewController.h>

#include <functional>
#include <memory>
#include <string>

struct DriftwoodOffer {
  std::string title;
  std::string line;
  std::string action;  // what its button says
  std::string url;
};

// What a person can do to either.
struct DriftwoodActions {
  std::function<void()> press;
  std::function<void()> close;
};

// As wide and as high as it is made, but meant for 320 by 50 points.
std::shared_ptr<velto::UIView> makeDriftwoodBanner(const DriftwoodOffer& offer,
                                                   const DriftwoodActions& actions);

class DriftwoodScreen : public velto::UIViewController {
 public:
  static std::shared_ptr<DriftwoodScreen> make(const DriftwoodOffer& offer, const DriftwoodActions& actions);

  bool accessibilityPerformEscape() override;  // Escape closes it

 private:
  explicit DriftwoodScreen(std::function<void()> close) : close_(std::move(close)) {}
  const std::function<void()> close_;
};
