// Delegates of banners and interstitials that write down what they hear.
#pragma once

#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"
#include "velto/velto.h"

#include <functional>

namespace velto::test {

using Heard = std::vector<std::string>;

template <class Delegate, class Told>
struct Recorder : Delegate {
  using Controller = Told;
  std::weak_ptr<UIViewController> host;
  Heard heard;
  std::optional<VeltoErrorAd> lastError;
  const Controller* lastController = nullptr;
  std::function<void()> onCall;

  std::shared_ptr<UIViewController> presentViewController() override { return host.lock(); }
  bool heardLast(const std::string& what) const { return !heard.empty() && heard.back() == what; }

 protected:
  void note(const std::string& what, const Controller& controller) {
    heard.push_back(what);
    lastController = &controller;
    if (onCall) onCall();
  }
  void noteFailure(const VeltoErrorAd& error, const Controller& controller) {
    lastError = error;
    note("fail " + std::to_string(error.errorCode), controller);
  }
};

struct RecordingDelegate : Recorder<VeltoBannerViewControllerDelegate, VeltoBannerViewControllerPrivate> {
  void veltoBannerViewControllerDidFinishLoad(Controller& c) override { note("finish", c); }
  void veltoBannerViewControllerDidPress(Controller& c) override { note("press", c); }
  void veltoBannerViewControllerDidClose(Controller& c) override { note("close", c); }
  void veltoBannerViewControllerDidFail(Controller& c, const VeltoErrorAd& e) override { noteFailure(e, c); }
};

struct RecordingInterstitialDelegate
    : Recorder<VeltoInterstitialViewControllerDelegate, VeltoInterstitialViewControllerPrivate> {
  using Error = VeltoErrorAd;
  std::function<void()> onState;
  void veltoInterstitialViewControllerDidChangeState(Controller&) override {
    if (onState) onState();
  }
  void veltoInterstitialViewControllerDidFinishLoad(Controller& c) override { note("finish", c); }
  void veltoInterstitialViewControllerDidFail(Controller& c, const Error& e) override { noteFailure(e, c); }
  void veltoInterstitialViewControllerDidAppear(Controller& c) override { note("appear", c); }
  void veltoInterstitialViewControllerDidPress(Controller& c) override { note("press", c); }
  void veltoInterstitialViewControllerDidClose(Controller& c) override { note("close", c); }
  void onVeltoInterstitialDismissed(Controller& c) override { note("dismissed", c); }
};

}  // namespace velto::test
