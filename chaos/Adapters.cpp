// How a network behaves.
#include "Adapters.h"

#include <algorithm>

namespace velto::chaos {

using namespace std::chrono_literals;

std::shared_ptr<UIView> Adapter::getBannerView() {
  if (!view && hasView) view = UIView::make();
  return view;
}

void Network::later(std::chrono::milliseconds delay, std::function<void()> answer) const {
  auto& queue = dynamic_cast<headless::VirtualQueue&>(Platform::current().mainQueue());
  if (thread == Thread::Main)
    queue.postAfter(delay, std::move(answer));
  else
    queue.postOffMain(delay, std::move(answer));
}

void Network::adapt(const std::shared_ptr<VeltoMediationItemResponse>&, std::optional<int64_t> bannerSize,
                    const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t adType,
                    VeltoAdCompletion completion) {
  std::erase_if(adapters, [](const auto& adapter) { return adapter.expired(); });
  const auto made = std::make_shared<Adapter>(adType);
  made->hasView = hasView;
  made->takesRoot = takesRoot;
  adapters.push_back(made);
  const auto ad = VeltoAd::adWithMediation(made, bannerSize, headers);
  const auto error = VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoFill);
  switch (manner) {
    case Manner::AtOnce:
      return completion(ad, std::nullopt);
    case Manner::Late:
      return later(3s, [completion, ad] { completion(ad, std::nullopt); });
    case Manner::Twice:
      later(100ms, [completion, ad] { completion(ad, std::nullopt); });
      return completion(nullptr, error);
    case Manner::Never:
      return;
    case Manner::Fails:
      return completion(nullptr, error);
    case Manner::NeitherNor:
      return completion(nullptr, std::nullopt);
    case Manner::Both:
      return completion(ad, error);
  }
}

void Network::act(int which, int what) {
  std::erase_if(adapters, [](const auto& adapter) { return adapter.expired(); });
  if (adapters.empty()) return;
  const auto adapter = adapters[static_cast<size_t>(which) % adapters.size()].lock();
  const auto told = adapter->told();
  const auto root = adapter->root.lock();
  const bool isScreen = adapter->adType() == VeltoAdTypeInterstitial;
  const auto post = [&](const char* name) {
    Platform::current().notificationCenter().postNotification({name, adapter});
  };
  if (what == 0)
    post(isScreen ? constNotificationAdMobAdapterGADInterstitialReady
                  : constNotificationAdMobAdapterGADBannerReady);
  if (what == 1) post(constNotificationAdMobAdapterGADInterstitialError);
  if (what == 2 && isScreen && root)
    root->presentViewController(std::make_shared<UIViewController>(), false, nullptr);
  if (what == 3 && root && root->presentedViewController())
    root->presentedViewController()->dismissViewControllerAnimated(false, nullptr);
  if (what == 4 && told) told->mediationBannerDidPress();
  if (what == 5 && told) told->mediationBannerDidClose();
}

}  // namespace velto::chaos
