// Delegates that pass on what they hear.
#pragma once

#include "velto/platform/ui/UIViewController.h"
#include "velto/velto.h"

#include <functional>
#include <memory>

namespace velto::chaos {

enum class Heard { Finish, Fail, Appear, Press, Close, Dismissed, State };

struct Hearing {
  std::weak_ptr<UIViewController> host;
  std::function<void(Heard)> on;

 protected:
  void pass(Heard heard) const {
    if (const auto call = on) call(heard);  // a copy: it may be taken away inside
  }
};

struct BannerEars : VeltoBannerViewControllerDelegate, Hearing {
  using Controller = VeltoBannerViewControllerPrivate;
  std::shared_ptr<UIViewController> presentViewController() override { return host.lock(); }
  void veltoBannerViewControllerDidFinishLoad(Controller&) override { pass(Heard::Finish); }
  void veltoBannerViewControllerDidPress(Controller&) override { pass(Heard::Press); }
  void veltoBannerViewControllerDidClose(Controller&) override { pass(Heard::Close); }
  void veltoBannerViewControllerDidFail(Controller&, const VeltoErrorAd&) override { pass(Heard::Fail); }
  void veltoBannerViewControllerDidChangeState(Controller&) override { pass(Heard::State); }
};

struct InterstitialEars : VeltoInterstitialViewControllerDelegate, Hearing {
  using Controller = VeltoInterstitialViewControllerPrivate;
  std::shared_ptr<UIViewController> presentViewController() override { return host.lock(); }
  void veltoInterstitialViewControllerDidFinishLoad(Controller&) override { pass(Heard::Finish); }
  void veltoInterstitialViewControllerDidFail(Controller&, const VeltoErrorAd&) override {
    pass(Heard::Fail);
  }
  void veltoInterstitialViewControllerDidAppear(Controller&) override { pass(Heard::Appear); }
  void veltoInterstitialViewControllerDidPress(Controller&) override { pass(Heard::Press); }
  void veltoInterstitialViewControllerDidClose(Controller&) override { pass(Heard::Close); }
  void onVeltoInterstitialDismissed(Controller&) override { pass(Heard::Dismissed); }
  void veltoInterstitialViewControllerDidChangeState(Controller&) override { pass(Heard::State); }
};

}  // namespace velto::chaos
