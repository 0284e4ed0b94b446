// What the tests of the presentation share: a window, delegates that write down what they hear, an ad network's
// adapter.
#pragma once

#include "velto/ads/VeltoAdMediationCoreAdapter.h"

#include "../support/Delegates.h"
#include "../support/HeadlessTest.h"

namespace velto::test {

struct FakeAdapter : VeltoAdMediationCoreAdapter, VeltoAdMediationRootViewControllerUser {
  explicit FakeAdapter(uint64_t adType, bool takesRoot = true)
      : type(adType), user(takesRoot ? this : nullptr) {}
  static std::shared_ptr<FakeAdapter> make(uint64_t type) { return std::make_shared<FakeAdapter>(type); }
  uint64_t adType() const override { return type; }
  VeltoAdMediationRootViewControllerUser* rootViewControllerUser() override { return user; }
  std::shared_ptr<UIView> getBannerView() override {
    if (!view && hasView) view = UIView::make();
    return view;
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

  const uint64_t type;
  VeltoAdMediationRootViewControllerUser* const user;
  bool hasView = true;
  std::shared_ptr<UIView> view, loadedView;
  int loaded = 0;
  std::weak_ptr<UIViewController> root;
  std::function<void(UIViewController&)> onRoot;
};

inline std::shared_ptr<VeltoAd> mediated(const std::shared_ptr<FakeAdapter>& by) {
  return VeltoAd::adWithMediation(by, std::nullopt, nullptr);
}

class UITest : public HeadlessTest {
 protected:
  UITest() : window(std::make_unique<headless::HostWindow>(CGSize{390, 844}, UIEdgeInsets{47, 0, 34, 0})) {
    registerKey();
    delegate->host = full->host = window->controller();
  }
  ~UITest() override { window.reset(); }

  std::shared_ptr<VeltoBannerViewController> banner(
      VeltoBannerPosition position = VeltoBannerPositionBottom) {
    return VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, position);
  }
  std::shared_ptr<VeltoInterstitialViewController> interstitial() {
    return VeltoInterstitialViewController::initWithDelegate(full);
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
  CGRect frameInWindow(const UIView& view) const {
    return {window->view().convertPointFromView({0, 0}, view), view.frame().size};
  }
  template <class Object>
  void post(const char* notification, const Object& object) {
    platform->notificationCenter().postNotification({notification, object});
  }

  std::unique_ptr<headless::HostWindow> window;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  const std::shared_ptr<RecordingInterstitialDelegate> full =
      std::make_shared<RecordingInterstitialDelegate>();
};

}  // namespace velto::test
