// An ad of another network: a widget.
#pragma once

#include <gtk/gtk.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_ADAPTER_AD (velto_adapter_ad_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoAdapterAd, velto_adapter_ad, VELTO, ADAPTER_AD, GObject)

VELTO_PUBLIC VeltoAdapterAd* velto_adapter_ad_new(GtkWidget* widget, int width, int height);
VELTO_PUBLIC VeltoAdapterAd* velto_adapter_ad_new_full_screen(GtkWidget* widget);
VELTO_PUBLIC GtkWidget* velto_adapter_ad_get_widget(VeltoAdapterAd* self);
VELTO_PUBLIC int velto_adapter_ad_get_width(VeltoAdapterAd* self);
VELTO_PUBLIC int velto_adapter_ad_get_height(VeltoAdapterAd* self);
VELTO_PUBLIC gboolean velto_adapter_ad_is_full_screen(VeltoAdapterAd* self);
VELTO_PUBLIC void velto_adapter_ad_press(VeltoAdapterAd* self);
VELTO_PUBLIC void velto_adapter_ad_close(VeltoAdapterAd* self);

G_END_DECLS
