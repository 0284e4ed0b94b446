// See Interstitials.h.
#include "Interstitials.h"

#include <algorithm>
#include <stdexcept>

namespace demo {

// An interstitial and its delegate.
class Interstitials::Delegate : public velto::VeltoInterstitialViewControllerDelegate {
 public:
  Delegate(const Interstitials& all, const InterstitialCase& what)
      : host_(all.host_), heard_(all.heard_), case_(what) {}

  std::shared_ptr<velto::VeltoInterstitialViewController> controller;

  void load() {
    ++loads_;
    // Real applications register one key, once. Here it picks the answer, so it holds for this load only.
    velto::VeltoFramework::addVeltoKey(case_.key);
    heard_(case_.name, "load");
    controller->load();
    velto::VeltoFramework::addVeltoKey("demo");
  }

 private:
  using Controller = velto::VeltoInterstitialViewControllerPrivate;

  std::shared_ptr<velto::UIViewController> presentViewController() override { return host_; }
  void veltoInterstitialViewControllerDidFinishLoad(Controller&) override {
    heard_(case_.name, "DidFinishLoad");
    if (!case_.autoShow) controller->show();
  }
  void veltoInterstitialViewControllerDidFail(Controller&, const velto::VeltoErrorAd& error) override {
    heard_(case_.name, "DidFail " + std::to_string(error.errorCode));
  }
  void veltoInterstitialViewControllerDidAppear(Controller&) override {
    heard_(case_.name, "DidAppear");
    if (case_.loadsNext && loads_ == 1) load();
  }
  void veltoInterstitialViewControllerDidPress(Controller&) override { heard_(case_.name, "DidPress"); }
  void veltoInterstitialViewControllerDidClose(Controller&) override { heard_(case_.name, "DidClose"); }
  void onVeltoInterstitialDismissed(Controller&) override { heard_(case_.name, "dismissed"); }

  const std::shared_ptr<velto::UIViewController> host_;
  const Heard heard_;
  const InterstitialCase& case_;
  int loads_ = 0;
};

const std::vector<InterstitialCase>& Interstitials::cases() {
  using namespace velto;
  static const std::vector<InterstitialCase> all{
      {"countdown", "Full screen, 3 s countdown", VeltoAnimationNone, "countdown"},
      {"auto", "Auto-show, a card", VeltoAnimationNone, "card", true},
      {"left", "Full screen, from the left", VeltoAnimationFromLeft},
      {"left spring", "From the left with spring", VeltoAnimationFromLeftWithSpring},
      {"right", "Full screen, from the right", VeltoAnimationFromRight},
      {"right spring", "From the right with spring", VeltoAnimationFromRightWithSpring},
      {"random", "Full screen, any of those", VeltoAnimationRandom},
      {"reload", "One after another", VeltoAnimationNone, "reload", false, true},
      {"net full", "Another network's full screen", VeltoAnimationNone, "network"},
      {"film", "A film in a rich page", VeltoAnimationNone, "film"},
  };
  return all;
}

void Interstitials::open(const std::string& name) {
  const auto& all = cases();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const InterstitialCase& c) { return c.name == name; });
  if (found == all.end()) throw std::logic_error("no interstitial \"" + name + "\"");
  clear();
  current_ = std::make_shared<Delegate>(*this, *found);
  current_->controller = velto::VeltoInterstitialViewController::initWithDelegate(current_);
  current_->controller->setAnimation(found->animation);
  current_->controller->setAutoShowWhenReady(found->autoShow);
  current_->load();
}

}  // namespace demo
