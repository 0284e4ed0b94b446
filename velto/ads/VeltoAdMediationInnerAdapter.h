// What the two adapters of the library itself have in common: neither shows anything, both bring markup that
// is shown like any other. Their headers say on which thread they run.
#pragma once

#include "velto/ads/VeltoAdMediationAdapterProtocol.h"
#include "velto/ads/VeltoAdMediationCoreAdapter.h"

#include <memory>
#include <optional>

namespace velto {

class VeltoAdMediationInnerAdapter : public VeltoAdMediationCoreAdapter {
 public:
  using Item = std::shared_ptr<VeltoMediationItemResponse>;
  using Headers = std::shared_ptr<VeltoTaskResponseHeaders>;

  uint64_t adType() const override { return adType_; }
  std::string description() const override {
    return Description(className_, this).field("AdType", adType_).text();
  }

 protected:
  explicit VeltoAdMediationInnerAdapter(const char* className) : className_(className) {}

  static void fail(const VeltoAdCompletion& completion, VeltoAdEndReason reason) {
    if (completion) completion(nullptr, VeltoErrorAd::because(reason));
  }

  uint64_t adType_ = 0;

 private:
  const char* className_;
};

// The class of such an adapter, whose static adapt() does the work.
template <class Adapter>
class VeltoAdMediationInnerAdapterClass : public VeltoAdMediationAdapterProtocol {
 public:
  void adapt(const std::shared_ptr<VeltoMediationItemResponse>& item, std::optional<int64_t> bannerSize,
             const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t adType,
             VeltoAdCompletion completionHandler) override {
    Adapter::adapt(item, bannerSize, headers, adType, completionHandler);
  }
};

}  // namespace velto
