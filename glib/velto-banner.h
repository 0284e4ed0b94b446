// The banner: a widget that shows an ad.
#pragma once

#include <gtk/gtk.h>

#include "velto-enums.h"
#include "velto-targeting.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_BANNER (velto_banner_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoBanner, velto_banner, VELTO, BANNER, GtkWidget)

VELTO_PUBLIC GtkWidget* velto_banner_new(VeltoBannerSize size);

VELTO_PUBLIC void velto_banner_load(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_load_async(VeltoBanner* self, GCancellable* cancellable,
                                          GAsyncReadyCallback callback, gpointer user_data);
VELTO_PUBLIC gboolean velto_banner_load_finish(VeltoBanner* self, GAsyncResult* result, GError** error);
VELTO_PUBLIC void velto_banner_clear(VeltoBanner* self);

VELTO_PUBLIC VeltoBannerSize velto_banner_get_size(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_size(VeltoBanner* self, VeltoBannerSize size);
VELTO_PUBLIC gboolean velto_banner_get_auto_load(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_auto_load(VeltoBanner* self, gboolean auto_load);
VELTO_PUBLIC gboolean velto_banner_get_auto_refresh(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_auto_refresh(VeltoBanner* self, gboolean auto_refresh);
VELTO_PUBLIC guint velto_banner_get_refresh_interval(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_refresh_interval(VeltoBanner* self, guint seconds);
VELTO_PUBLIC VeltoAnimation velto_banner_get_animation(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_animation(VeltoBanner* self, VeltoAnimation animation);
VELTO_PUBLIC VeltoHeavyAdPolicy velto_banner_get_heavy_ad_policy(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_heavy_ad_policy(VeltoBanner* self, VeltoHeavyAdPolicy policy);
VELTO_PUBLIC gboolean velto_banner_get_collapse(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_collapse(VeltoBanner* self, gboolean collapse);
VELTO_PUBLIC VeltoTargeting* velto_banner_get_targeting(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_targeting(VeltoBanner* self, VeltoTargeting* targeting);
VELTO_PUBLIC VeltoBannerState velto_banner_get_state(VeltoBanner* self);
VELTO_PUBLIC int velto_banner_get_ad_width(VeltoBanner* self);
VELTO_PUBLIC int velto_banner_get_ad_height(VeltoBanner* self);
VELTO_PUBLIC const char* velto_banner_get_placement(VeltoBanner* self);
VELTO_PUBLIC void velto_banner_set_placement(VeltoBanner* self, const char* placement);
VELTO_PUBLIC GList* velto_banner_get_timelines(VeltoBanner* self);

G_END_DECLS
