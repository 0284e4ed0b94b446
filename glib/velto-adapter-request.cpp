#include "velto-adapter-private.h"

using namespace velto_glib;

struct _VeltoAdapterRequest {
  GObject parent_instance;
  AdapterQuestion* question;  // its answer is empty once it was given
};

/**
 * VeltoAdapterRequest:
 *
 * What a [iface@Velto.Adapter] is asked for.
 *
 * It is answered once. One that is let go of without an answer has failed.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoAdapterRequest, velto_adapter_request, G_TYPE_OBJECT)

static void give(VeltoAdapterRequest* self, VeltoAdapterAd* ad, const velto::VeltoErrorAd* error) {
  const auto answer = std::exchange(self->question->answer, nullptr);
  if (answer) guarded("VeltoAdapterRequest", [&] { answer(ad, error); });
}

static bool isOpen(VeltoAdapterRequest* self, const char* function) {
  if (!self->question->answer) g_critical("%s: the request has been answered already", function);
  return bool(self->question->answer);
}

static void velto_adapter_request_dispose(GObject* object) {
  const auto nothing = velto::VeltoErrorAd::veltoErrorAdWithCode(velto::VeltoErrorNoFill);
  give(VELTO_ADAPTER_REQUEST(object), nullptr, &nothing);
  G_OBJECT_CLASS(velto_adapter_request_parent_class)->dispose(object);
}

static void velto_adapter_request_finalize(GObject* object) {
  delete VELTO_ADAPTER_REQUEST(object)->question;
  G_OBJECT_CLASS(velto_adapter_request_parent_class)->finalize(object);
}

static void velto_adapter_request_class_init(VeltoAdapterRequestClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = velto_adapter_request_dispose;
  G_OBJECT_CLASS(klass)->finalize = velto_adapter_request_finalize;
}

static void velto_adapter_request_init(VeltoAdapterRequest* self) {
  self->question = new AdapterQuestion;
}

/**
 * velto_adapter_request_is_full_screen:
 * @self: a request
 *
 * Gets whether an ad for an interstitial is wanted, or one for a banner.
 *
 * Returns: whether it is to fill the window
 *
 * Since: 1.0
 */
gboolean velto_adapter_request_is_full_screen(VeltoAdapterRequest* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER_REQUEST(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return self->question->fullScreen;
}

/**
 * velto_adapter_request_get_ad_unit:
 * @self: a request
 *
 * Gets the network's own name of the place.
 *
 * Returns: (nullable) (transfer none): the name
 *
 * Since: 1.0
 */
const char* velto_adapter_request_get_ad_unit(VeltoAdapterRequest* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER_REQUEST(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->question->adUnit ? self->question->adUnit->c_str() : nullptr;
}

/**
 * velto_adapter_request_get_data:
 * @self: a request
 *
 * Gets what the server has for the network besides.
 *
 * Returns: (nullable) (transfer none): the data, as it was sent
 *
 * Since: 1.0
 */
const char* velto_adapter_request_get_data(VeltoAdapterRequest* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER_REQUEST(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->question->data ? self->question->data->c_str() : nullptr;
}

/**
 * velto_adapter_request_answer:
 * @self: a request
 * @ad: an ad of the kind that is wanted
 *
 * Answers with an ad.
 *
 * Since: 1.0
 */
void velto_adapter_request_answer(VeltoAdapterRequest* self, VeltoAdapterAd* ad) {
  g_return_if_fail(VELTO_IS_ADAPTER_REQUEST(self));
  g_return_if_fail(VELTO_IS_ADAPTER_AD(ad));
  velto_return_if_elsewhere();
  if (!isOpen(self, __func__)) return;
  if (bool(velto_adapter_ad_is_full_screen(ad)) != self->question->fullScreen) {
    g_critical("%s: the ad is %s; ask velto_adapter_request_is_full_screen() before", __func__,
               self->question->fullScreen ? "for a banner, not for all of the screen"
                                          : "for all of the screen, not for a banner");
    const auto error = velto::VeltoErrorAd::veltoErrorAdWithCode(velto::VeltoErrorDeveloper);
    return give(self, nullptr, &error);
  }
  give(self, ad, nullptr);
}

/**
 * velto_adapter_request_fail:
 * @self: a request
 * @error: (nullable): why, best an error of [error@Velto.AdError]; %NULL when the network has no ad now
 *
 * Answers that there is no ad. The next network of the server's list is asked.
 *
 * To let go of the request without an answer says that the network has no ad now; so do in Python, which knows no error
 * that is `None`.
 *
 * Since: 1.0
 */
void velto_adapter_request_fail(VeltoAdapterRequest* self, const GError* error) {
  g_return_if_fail(VELTO_IS_ADAPTER_REQUEST(self));
  velto_return_if_elsewhere();
  if (!isOpen(self, __func__)) return;
  int64_t code = velto::VeltoErrorNoFill;
  if (error) code = error->domain == VELTO_AD_ERROR ? error->code : int(VELTO_AD_ERROR_SERVER);
  std::optional<velto::NSError> words;
  if (error) words = {g_quark_to_string(error->domain), error->code, error->message};
  const auto told = velto::VeltoErrorAd::veltoErrorAdWithCode(code, words);
  give(self, nullptr, &told);
}

namespace velto_glib {

VeltoAdapterRequest* newAdapterRequest(AdapterQuestion question) {
  auto* made = VELTO_ADAPTER_REQUEST(g_object_new(VELTO_TYPE_ADAPTER_REQUEST, nullptr));
  *made->question = std::move(question);
  return made;
}

}  // namespace velto_glib
