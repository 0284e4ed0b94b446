#include "velto-private.h"

struct _VeltoAdapterAd {
  GObject parent_instance;
  GtkWidget* widget;
  int width;
  int height;
};

/**
 * VeltoAdapterAd:
 *
 * An ad of another network: a widget, for a banner or for all of a window.
 *
 * What a person does to the widget is the network's matter, and it tells of it: [method@Velto.AdapterAd.press],
 * [method@Velto.AdapterAd.close].
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoAdapterAd, velto_adapter_ad, G_TYPE_OBJECT)

enum { PRESSED, CLOSED, N_SIGNALS };
static guint signals[N_SIGNALS];

static void velto_adapter_ad_dispose(GObject* object) {
  g_clear_object(&VELTO_ADAPTER_AD(object)->widget);
  G_OBJECT_CLASS(velto_adapter_ad_parent_class)->dispose(object);
}

static void velto_adapter_ad_class_init(VeltoAdapterAdClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = velto_adapter_ad_dispose;
  const auto add = [](const char* name) {
    return g_signal_new(name, VELTO_TYPE_ADAPTER_AD, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr, nullptr,
                        G_TYPE_NONE, 0);
  };
  /**
   * VeltoAdapterAd::pressed:
   * @self: the ad
   *
   * A person has taken the offer up.
   *
   * Since: 1.0
   */
  signals[PRESSED] = add("pressed");
  /**
   * VeltoAdapterAd::closed:
   * @self: the ad
   *
   * A person has had enough of it.
   *
   * Since: 1.0
   */
  signals[CLOSED] = add("closed");
}

static void velto_adapter_ad_init(VeltoAdapterAd*) {}

static VeltoAdapterAd* make(GtkWidget* widget, int width, int height) {
  auto* made = VELTO_ADAPTER_AD(g_object_new(VELTO_TYPE_ADAPTER_AD, nullptr));
  made->widget = GTK_WIDGET(g_object_ref_sink(widget));
  made->width = width;
  made->height = height;
  return made;
}

/**
 * velto_adapter_ad_new:
 * @widget: what is to be seen of it
 * @width: its width in points
 * @height: its height in points
 *
 * Creates an ad for a banner.
 *
 * Returns: (transfer full): a new ad
 *
 * Since: 1.0
 */
VeltoAdapterAd* velto_adapter_ad_new(GtkWidget* widget, int width, int height) {
  velto_return_val_if_elsewhere(nullptr);
  g_return_val_if_fail(GTK_IS_WIDGET(widget), nullptr);
  g_return_val_if_fail(width > 0 && height > 0, nullptr);
  return make(widget, width, height);
}

/**
 * velto_adapter_ad_new_full_screen:
 * @widget: what is to be seen of it
 *
 * Creates an ad for an interstitial. It fills the window, below a button that closes it.
 *
 * Returns: (transfer full): a new ad
 *
 * Since: 1.0
 */
VeltoAdapterAd* velto_adapter_ad_new_full_screen(GtkWidget* widget) {
  velto_return_val_if_elsewhere(nullptr);
  g_return_val_if_fail(GTK_IS_WIDGET(widget), nullptr);
  return make(widget, 0, 0);
}

/**
 * velto_adapter_ad_get_widget:
 * @self: an ad
 *
 * Gets what is to be seen of it.
 *
 * Returns: (transfer none): the widget
 *
 * Since: 1.0
 */
GtkWidget* velto_adapter_ad_get_widget(VeltoAdapterAd* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER_AD(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->widget;
}

/**
 * velto_adapter_ad_get_width:
 * @self: an ad
 *
 * Gets its width.
 *
 * Returns: points, or 0 for an ad that fills the window
 *
 * Since: 1.0
 */
int velto_adapter_ad_get_width(VeltoAdapterAd* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER_AD(self), 0);
  velto_return_val_if_elsewhere(0);
  return self->width;
}

/**
 * velto_adapter_ad_get_height:
 * @self: an ad
 *
 * Gets its height.
 *
 * Returns: points, or 0 for an ad that fills the window
 *
 * Since: 1.0
 */
int velto_adapter_ad_get_height(VeltoAdapterAd* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER_AD(self), 0);
  velto_return_val_if_elsewhere(0);
  return self->height;
}

/**
 * velto_adapter_ad_is_full_screen:
 * @self: an ad
 *
 * Gets whether it is for an interstitial.
 *
 * Returns: whether it fills the window
 *
 * Since: 1.0
 */
gboolean velto_adapter_ad_is_full_screen(VeltoAdapterAd* self) {
  g_return_val_if_fail(VELTO_IS_ADAPTER_AD(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return self->width == 0;
}

/**
 * velto_adapter_ad_press:
 * @self: an ad
 *
 * Tells that a person has taken the offer up. The network itself opens what it leads to.
 *
 * Since: 1.0
 */
void velto_adapter_ad_press(VeltoAdapterAd* self) {
  g_return_if_fail(VELTO_IS_ADAPTER_AD(self));
  velto_return_if_elsewhere();
  g_signal_emit(self, signals[PRESSED], 0);
}

/**
 * velto_adapter_ad_close:
 * @self: an ad
 *
 * Tells that a person has had enough of it, which takes it off the screen.
 *
 * Since: 1.0
 */
void velto_adapter_ad_close(VeltoAdapterAd* self) {
  g_return_if_fail(VELTO_IS_ADAPTER_AD(self));
  velto_return_if_elsewhere();
  g_signal_emit(self, signals[CLOSED], 0);
}
