// Another ad network, whose adapters answer at once, late, twice or never, on any thread, with whatever they have.
#pragma once

#include "velto/ads/VeltoAdMediationAdapterProtocol.h"
#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/headless/VeltoHeadless.h"

#include <functional>
#include <memory>
#include <vector>

namespace velto::chaos {

enum class Thread { Transport, Main };

class Adapter : public VeltoAdMediationCoreAdapter, public VeltoAdMediationRootViewControllerUser {
 public:
  explicit Adapter(uint64_t type) : type_(type) {}
  uint64_t adType() const override { return type_; }
  VeltoAdMediationRootViewControllerUser* rootViewControllerUser() override {
    return takesRoot ? this : nullptr;
  }
  std::shared_ptr<UIView> getBannerView() override;
  void setAdRootViewController(const std::shared_ptr<UIViewController>& controller) override {
    root = controller;
  }
  std::shared_ptr<VeltoAdMediationAdapterDelegate> told() const { return delegate(); }

  bool hasView = true, takesRoot = true;
  std::shared_ptr<UIView> view;
  std::weak_ptr<UIViewController> root;

 private:
  const uint64_t type_;
};

class Network : public VeltoAdMediationAdapterProtocol {
 public:
  static constexpr char registeredName[] = "VeltoAdMediationAdapterAdMob";
  enum class Manner { AtOnce, Late, Twice, Never, Fails, NeitherNor, Both };
  static constexpr int manners = 7;

  void adapt(const std::shared_ptr<VeltoMediationItemResponse>& item, std::optional<int64_t> bannerSize,
             const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t adType,
             VeltoAdCompletion completion) override;
  // A network announces, fails, presents its screen or takes it away, reports what people did: at any time.
  void act(int which, int what);

  Manner manner = Manner::AtOnce;
  Thread thread = Thread::Transport;
  bool hasView = true, takesRoot = true;
  std::vector<std::weak_ptr<Adapter>> adapters;
  size_t most = 0;  // adapters at once

 private:
  void later(std::chrono::milliseconds delay, std::function<void()> answer) const;
};

}  // namespace velto::chaos
