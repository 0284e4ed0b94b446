// The interstitial: an ad that covers a window for a time.
#pragma once

#include <gtk/gtk.h>

#include "velto-enums.h"
#include "velto-targeting.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_INTERSTITIAL (velto_interstitial_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoInterstitial, velto_interstitial, VELTO, INTERSTITIAL, GObject)

VELTO_PUBLIC VeltoInterstitial* velto_interstitial_new(void);

VELTO_PUBLIC void velto_interstitial_load(VeltoInterstitial* self);
VELTO_PUBLIC void velto_interstitial_load_async(VeltoInterstitial* self, GCancellable* cancellable,
                                                GAsyncReadyCallback callback, gpointer user_data);
VELTO_PUBLIC gboolean velto_interstitial_load_finish(VeltoInterstitial* self, GAsyncResult* result,
                                                     GError** error);
VELTO_PUBLIC void velto_interstitial_present(VeltoInterstitial* self, GtkWidget* parent);
VELTO_PUBLIC void velto_interstitial_present_async(VeltoInterstitial* self, GtkWidget* parent,
                                                   GCancellable* cancellable, GAsyncReadyCallback callback,
                                                   gpointer user_data);
VELTO_PUBLIC gboolean velto_interstitial_present_finish(VeltoInterstitial* self, GAsyncResult* result,
                                                        GError** error);
VELTO_PUBLIC void velto_interstitial_clear(VeltoInterstitial* self);

VELTO_PUBLIC gboolean velto_interstitial_get_ready(VeltoInterstitial* self);
VELTO_PUBLIC VeltoInterstitialState velto_interstitial_get_state(VeltoInterstitial* self);
VELTO_PUBLIC GtkWidget* velto_interstitial_get_auto_present_for(VeltoInterstitial* self);
VELTO_PUBLIC void velto_interstitial_set_auto_present_for(VeltoInterstitial* self, GtkWidget* parent);
VELTO_PUBLIC VeltoAnimation velto_interstitial_get_animation(VeltoInterstitial* self);
VELTO_PUBLIC void velto_interstitial_set_animation(VeltoInterstitial* self, VeltoAnimation animation);
VELTO_PUBLIC VeltoHeavyAdPolicy velto_interstitial_get_heavy_ad_policy(VeltoInterstitial* self);
VELTO_PUBLIC void velto_interstitial_set_heavy_ad_policy(VeltoInterstitial* self, VeltoHeavyAdPolicy policy);
VELTO_PUBLIC VeltoTargeting* velto_interstitial_get_targeting(VeltoInterstitial* self);
VELTO_PUBLIC void velto_interstitial_set_targeting(VeltoInterstitial* self, VeltoTargeting* targeting);
VELTO_PUBLIC const char* velto_interstitial_get_placement(VeltoInterstitial* self);
VELTO_PUBLIC void velto_interstitial_set_placement(VeltoInterstitial* self, const char* placement);
VELTO_PUBLIC GList* velto_interstitial_get_timelines(VeltoInterstitial* self);

G_END_DECLS
