// What the tests of the presentation share: a window, a delegate that writes down what it hears, an ad
// network's adapter.
#pragma once

#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include "../support/HeadlessTest.h"

namespace velto::test {

struct RecordingDelegate : VeltoBannerViewControllerDelegate {
  std::weak_ptr<UIViewController> host;
  std::vector<std::string> heard;
  std::optional<VeltoErrorAd> lastError;
  const VeltoBannerViewControllerPrivate* lastController = nullptr;
  std::function<void()> onCall;

  std::shared_ptr<UIViewController> presentViewController() override { return host.lock(); }
  void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate& c) override {
    note("finish", c);
  }
  void veltoBannerViewControllerDidPress(VeltoBannerViewControllerPrivate& c) override { note("press", c); }
  void veltoBannerViewControllerDidClose(VeltoBannerViewControllerPrivate& c) override { note("close", c); }
  void veltoBannerViewControllerDidFail(VeltoBannerViewControllerPrivate& c,
                                        const VeltoErrorAd& error) override {
    lastError = error;
    note("fail " + std::to_string(error.errorCode), c);
  }

 private:
  void note(const std::string& what, const VeltoBannerViewControllerPrivate& controller) {
    heard.push_back(what);
    lastController = &controller;
    if (onCall) onCall();
  }
};

struct RecordingInterstitialDelegate : VeltoInterstitialViewControllerDelegate {
  using Controller = VeltoInterstitialViewControllerPrivate;
  std::weak_ptr<UIViewController> host;
  std::vector<std::string> heard;
  std::optional<VeltoErrorAd> lastError;
  const Controller* lastController = nullptr;
  std::function<void()> onCall;

  std::shared_ptr<UIViewController> presentViewController() override { return host.lock(); }
  void veltoInterstitialViewControllerDidFinishLoad(Controller& c) override { note("finish", c); }
  void veltoInterstitialViewControllerDidFail(Controller& c, const VeltoErrorAd& error) override {
    lastError = error;
    note("fail " + std::to_string(error.errorCode), c);
  }
  void veltoInterstitialViewControllerDidAppear(Controller& c) override { note("appear", c); }
  void veltoInterstitialViewControllerDidPress(Controller& c) override { note("press", c); }
  void veltoInterstitialViewControllerDidClose(Controller& c) override { note("close", c); }
  void onVeltoInterstitialDismissed(Controller& c) override { note("dismissed", c); }

 private:
  void note(const std::string& what, const Controller& controller) {
    heard.push_back(what);
    lastController = &controller;
    if (onCall) onCall();
  }
};

class FakeAdapter : public VeltoAdMediationCoreAdapter, public VeltoAdMediationRootViewControllerUser {
 public:
  explicit FakeAdapter(uint64_t type, bool takesRoot = true) : type_(type), takesRoot_(takesRoot) {}
  uint64_t adType() const override { return type_; }
  VeltoAdMediationRootViewControllerUser* rootViewControllerUser() override {
    return takesRoot_ ? this : nullptr;
  }
  std::shared_ptr<UIView> getBannerView() override {
    if (!view_ && hasView) view_ = UIView::make();
    return view_;
  }
  void gadAdLoaded(const std::shared_ptr<VeltoAd>&, const std::shared_ptr<UIView>& shown) override {
    loadedView = shown;
    ++loaded;
  }
  void setAdRootViewController(const std::shared_ptr<UIViewController>& controller) override {
    root = controller;
    if (onRoot) onRoot(*controller);
  }
  std::shared_ptr<VeltoAdMediationAdapterDelegate> told() const { return delegate(); }

 private:
  uint64_t type_;
  bool takesRoot_;
  std::shared_ptr<UIView> view_;

 public:
  bool hasView = true;
  std::shared_ptr<UIView> loadedView;
  int loaded = 0;
  std::weak_ptr<UIViewController> root;
  std::function<void(UIViewController&)> onRoot;
};

class UITest : public HeadlessTest {
 protected:
  UITest() : window(std::make_unique<headless::HostWindow>(CGSize{390, 844}, UIEdgeInsets{47, 0, 34, 0})) {
    registerKey();
    delegate->host = window->controller();
  }
  ~UITest() override { window.reset(); }

  std::shared_ptr<VeltoBannerViewController> banner(
      VeltoBannerPosition position = VeltoBannerPositionBottom) {
    return VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, position);
  }
  headless::RecordingWebView& page() { return platform->views().webView(); }
  // Loads an ad into the banner and plays its page to the end.
  void loadAd(VeltoBannerViewController& banner, headless::Answer answer = markup()) {
    platform->urlSession().enqueue(std::move(answer));
    banner.load();
    platform->runUntilIdle();
    page().finish();
    page().navigate("velto://loadFinished");
    platform->runUntilIdle();
  }
  static CGRect frameInWindow(const UIView& view, const UIView& root) {
    return {root.convertPointFromView({0, 0}, view), view.frame().size};
  }

  std::unique_ptr<headless::HostWindow> window;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

}  // namespace velto::test
