// The interface that other networks are brought by, and the way from the library to it.
#include <velto/ads/VeltoAd.h>
#include <velto/ads/VeltoAdMediationAdapterRegistry.h>
#include <velto/ads/VeltoAdMediationCoreAdapter.h>
#include <velto/platform/ui/UIButton.h>

#include "velto-adapter-private.h"
#include "velto-ground-private.h"

/**
 * VeltoAdapter:
 *
 * Another ad network, as an application brings it along.
 *
 * The ad server may answer with a list of networks instead of an ad (mediation). An adapter fetches the ads of one of them,
 * and draws them as widgets. It is made known by [method@Velto.Client.add_adapter].
 *
 * Since: 1.0
 */
G_DEFINE_INTERFACE(VeltoAdapter, velto_adapter, G_TYPE_OBJECT)

static void velto_adapter_default_init(VeltoAdapterInterface* iface) {
  iface->get_adapter_description = [](VeltoAdapter* self) { return g_strdup(G_OBJECT_TYPE_NAME(self)); };
  iface->present = [](VeltoAdapter*, VeltoAdapterAd*) {};
}

/**
 * velto_adapter_get_adapter_description:
 * @self: an adapter
 *
 * Says what the network is called, for logs.
 *
 * Returns: (transfer full) (nullable): a few words
 *
 * Since: 1.0
 */
char* velto_adapter_get_adapter_description(VeltoAdapter* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return VELTO_ADAPTER_GET_IFACE(self)->get_adapter_description(self);
}

/**
 * velto_adapter_load:
 * @self: an adapter
 * @request: what is wanted, and the way to answer
 *
 * Asks the network for an ad.
 *
 * Since: 1.0
 */
void velto_adapter_load(VeltoAdapter* self, VeltoAdapterRequest* request) {
  g_return_if_fail(VELTO_IS_ADAPTER(self));
  velto_return_if_elsewhere();
  g_return_if_fail(VELTO_IS_ADAPTER_REQUEST(request));
  const auto* iface = VELTO_ADAPTER_GET_IFACE(self);
  g_return_if_fail(iface->load);
  iface->load(self, request);
}

/**
 * velto_adapter_present:
 * @self: an adapter
 * @ad: a full-screen ad of this adapter
 *
 * Tells that the ad covers its window now.
 *
 * Since: 1.0
 */
void velto_adapter_present(VeltoAdapter* self, VeltoAdapterAd* ad) {
  g_return_if_fail(VELTO_IS_ADAPTER(self));
  velto_return_if_elsewhere();
  g_return_if_fail(VELTO_IS_ADAPTER_AD(ad));
  VELTO_ADAPTER_GET_IFACE(self)->present(self, ad);
}

namespace velto_glib {
namespace {

using Completion = velto::VeltoAdCompletion;

// One ad of the network, as the library's controllers see it.
class AdapterAd final : public velto::VeltoAdMediationCoreAdapter,
                        public velto::VeltoAdMediationRootViewControllerUser {
 public:
  AdapterAd(VeltoAdapter* adapter, VeltoAdapterAd* ad)
      : adapter_(VELTO_ADAPTER(g_object_ref(adapter))),
        ad_(VELTO_ADAPTER_AD(g_object_ref(ad))),
        view_(ground().adView(velto_adapter_ad_get_widget(ad))) {
    auto* words = velto_adapter_get_adapter_description(adapter);
    description_ = words ? words : "";
    g_free(words);
    g_signal_connect(ad_, "pressed", G_CALLBACK(pressed), this);
    g_signal_connect(ad_, "closed", G_CALLBACK(closed), this);
  }
  AdapterAd(const AdapterAd&) = delete;
  AdapterAd& operator=(const AdapterAd&) = delete;
  ~AdapterAd() override {
    g_signal_handlers_disconnect_by_data(ad_, this);
    ground().onMainThread([adapter = adapter_, ad = ad_, view = std::move(view_)] {
      view->removeFromSuperview();
      g_object_unref(ad);
      g_object_unref(adapter);
    });
  }

  uint64_t adType() const override {
    return velto_adapter_ad_is_full_screen(ad_) ? velto::VeltoAdTypeInterstitial : velto::VeltoAdTypeBanner;
  }
  std::string description() const override { return description_; }
  VeltoAdMediationRootViewControllerUser* rootViewControllerUser() override { return this; }
  std::shared_ptr<velto::UIView> getBannerView() override { return view_; }

  // An interstitial's turn has come: it lies in the screen, below what closes that.
  void setAdRootViewController(const std::shared_ptr<velto::UIViewController>& controller) override {
    if (adType() != velto::VeltoAdTypeInterstitial || view_->superview()) return;
    const auto& screen = controller->view();
    const auto others = screen->subviews();
    view_->setAutoresizingMask(velto::UIViewAutoresizingFlexibleWidth |
                               velto::UIViewAutoresizingFlexibleHeight);
    screen->addSubview(view_);
    view_->setFrame(screen->bounds());
    for (const auto& other : others)
      if (dynamic_cast<velto::UIButton*>(other.get())) screen->addSubview(other);
    velto_adapter_present(adapter_, ad_);
  }

 private:
  static void pressed(VeltoAdapterAd*, AdapterAd* self) noexcept {
    guarded(__func__, [&] {
      if (const auto told = self->delegate()) told->mediationBannerDidPress();
    });
  }
  static void closed(VeltoAdapterAd*, AdapterAd* self) noexcept {
    guarded(__func__, [&] {
      if (const auto told = self->delegate()) told->mediationBannerDidClose();
    });
  }

  VeltoAdapter* adapter_;
  VeltoAdapterAd* ad_;
  std::shared_ptr<velto::UIView> view_;
  std::string description_;  // as it was asked for on the main thread
};

class AdapterClass final : public velto::VeltoAdMediationAdapterProtocol {
 public:
  explicit AdapterClass(VeltoAdapter* adapter) : adapter_(VELTO_ADAPTER(g_object_ref(adapter))) {}
  AdapterClass(const AdapterClass&) = delete;
  AdapterClass& operator=(const AdapterClass&) = delete;
  ~AdapterClass() override {
    ground().onMainThread([adapter = adapter_] { g_object_unref(adapter); });
  }

  void adapt(const std::shared_ptr<velto::VeltoMediationItemResponse>& item,
             std::optional<int64_t> bannerSize,
             const std::shared_ptr<velto::VeltoTaskResponseHeaders>& headers, uint64_t adType,
             Completion completionHandler) override {
    const auto* adapter = VELTO_ADAPTER(g_object_ref(adapter_));
    ground().onMainThread([=] {
      ask(const_cast<VeltoAdapter*>(adapter), *item, adType, [=](VeltoAdapterAd* ad, const auto* error) {
        if (error) return completionHandler(nullptr, *error);
        // A widget that cannot be used is an answer, too: somebody waits for it.
        std::shared_ptr<velto::VeltoAd> made;
        const bool isUsable = guarded("velto_adapter_request_answer", [&] {
          made = velto::VeltoAd::adWithMediation(
              std::make_shared<AdapterAd>(const_cast<VeltoAdapter*>(adapter), ad), bannerSize, headers);
        });
        if (!isUsable)
          return completionHandler(nullptr,
                                   velto::VeltoErrorAd::because(velto::VeltoAdEndReason::AdapterWithoutView));
        const bool isSized = !velto_adapter_ad_is_full_screen(ad);
        if (isSized)
          made->size = {double(velto_adapter_ad_get_width(ad)), double(velto_adapter_ad_get_height(ad))};
        completionHandler(made, std::nullopt);
      });
    });
  }

 private:
  // Takes the reference to the adapter over.
  static void ask(VeltoAdapter* adapter, const velto::VeltoMediationItemResponse& item, uint64_t adType,
                  std::function<void(VeltoAdapterAd*, const velto::VeltoErrorAd*)> answer) {
    AdapterQuestion question;
    question.fullScreen = adType == velto::VeltoAdTypeInterstitial;
    if (item.e()) question.adUnit = item.e()->adUnit();
    if (item.e()) question.data = item.e()->data();
    question.answer = std::move(answer);
    auto* request = newAdapterRequest(std::move(question));
    g_object_set_data_full(G_OBJECT(request), "velto-adapter", adapter, g_object_unref);
    velto_adapter_load(adapter, request);
    g_object_unref(request);
  }

  VeltoAdapter* adapter_;
};

}  // namespace

std::shared_ptr<velto::VeltoAdMediationAdapterProtocol> adapterClassFor(VeltoAdapter* adapter) {
  return std::make_shared<AdapterClass>(adapter);
}

}  // namespace velto_glib

/**
 * velto_client_add_adapter:
 * @self: a client
 * @name: the name by which the ad server knows such an adapter, such as "VeltoAdMediationAdapterAdMob"
 * @adapter: (nullable): the adapter, or %NULL to take it away
 *
 * Makes another ad network known. From the next request on the ad server knows that it is there.
 *
 * Since: 1.0
 */
void velto_client_add_adapter(VeltoClient* self, const char* name, VeltoAdapter* adapter) {
  g_return_if_fail(VELTO_IS_CLIENT(self));
  velto_return_if_elsewhere();
  g_return_if_fail(name && *name);
  g_return_if_fail(!adapter || VELTO_IS_ADAPTER(adapter));
  velto_glib::guarded(__func__, [&] {
    velto::VeltoAdMediationAdapterRegistry::registerAdapter(
        name, adapter ? velto_glib::adapterClassFor(adapter) : nullptr);
  });
}
