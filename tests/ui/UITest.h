// What the tests of the presentation share: a window, a delegate that writes down what it hears, an ad
// network's adapter.
#pragma once

#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include "../support/HeadlessTest.h"

namespace velto::test {

// Writes down what a controller tells its delegate.
template <class Delegate, class Told>
struct Recorder : Delegate {
  using Controller = Told;
  std::weak_ptr<UIViewController> host;
  std::vector<std::string> heard;
  std::optional<VeltoErrorAd> lastError;
  const Controller* lastController = nullptr;
  std::function<void()> onCall;

  std::shared_ptr<UIViewController> presentViewController() override { return host.lock(); }

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
  void veltoInterstitialViewControllerDidFinishLoad(Controller& c) override { note("finish", c); }
  void veltoInterstitialViewControllerDidFail(Controller& c, const VeltoErrorAd& error) override {
    noteFailure(error, c);
  }
  void veltoInterstitialViewControllerDidAppear(Controller& c) override { note("appear", c); }
  void veltoInterstitialViewControllerDidPress(Controller& c) override { note("press", c); }
  void veltoInterstitialViewControllerDidClose(Controller& c) override { note("close", c); }
  void onVeltoInterstitialDismissed(Controller& c) override { note("dismissed", c); }
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
  template <class Ad>
  void load(Ad& ad, headless::Answer answer) {
    platform->urlSession().enqueue("/sdk/", std::move(answer));
    ad.load();
    platform->runUntilIdle();
  }
  // Loads an ad into the banner and plays its page to the end.
  void loadAd(VeltoBannerViewController& banner, headless::Answer answer = markup()) {
    load(banner, std::move(answer));
    page().finish();
    page().navigate("velto://loadFinished");
    platform->runUntilIdle();
  }
  // The address of the command "name" or "name?item=value", the value as it is before it is escaped.
  static std::string mraid(const std::string& text) {
    const size_t question = text.find('?');
    const auto bare = NSURL::URLWithString("mraid://" + text.substr(0, question)).value();
    if (question == std::string::npos) return bare.absoluteString();
    const size_t equals = text.find('=');
    const auto item = text.substr(question + 1, equals - question - 1);
    return bare.URLByReplacingQueryItems({{item, text.substr(equals + 1)}}).absoluteString();
  }
  static size_t closeButtons(const UIView& view) {
    size_t count = dynamic_cast<const VeltoCloseButton*>(&view) ? 1 : 0;
    for (const auto& subview : view.subviews()) count += closeButtons(*subview);
    return count;
  }
  static CGRect frameInWindow(const UIView& view, const UIView& root) {
    return {root.convertPointFromView({0, 0}, view), view.frame().size};
  }

  std::unique_ptr<headless::HostWindow> window;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

}  // namespace velto::test
