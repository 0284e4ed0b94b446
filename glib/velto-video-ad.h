// Video ads, in an application's own player or over its window.
#pragma once

#include <gtk/gtk.h>

#include "velto-video-ad-companion.h"
#include "velto-video-ad-enums.h"
#include "velto-video-ad-info.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_VIDEO_AD (velto_video_ad_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoVideoAd, velto_video_ad, VELTO, VIDEO_AD, GObject)

VELTO_PUBLIC VeltoVideoAd* velto_video_ad_new(void);

VELTO_PUBLIC void velto_video_ad_load(VeltoVideoAd* self, const char* address);
VELTO_PUBLIC void velto_video_ad_load_async(VeltoVideoAd* self, const char* address,
                                            GCancellable* cancellable, GAsyncReadyCallback callback,
                                            gpointer user_data);
VELTO_PUBLIC gboolean velto_video_ad_load_finish(VeltoVideoAd* self, GAsyncResult* result, GError** error);
VELTO_PUBLIC void velto_video_ad_load_document(VeltoVideoAd* self, const char* document);
VELTO_PUBLIC void velto_video_ad_load_document_async(VeltoVideoAd* self, const char* document,
                                                     GCancellable* cancellable, GAsyncReadyCallback callback,
                                                     gpointer user_data);
VELTO_PUBLIC gboolean velto_video_ad_load_document_finish(VeltoVideoAd* self, GAsyncResult* result,
                                                          GError** error);

VELTO_PUBLIC gboolean velto_video_ad_play_in(VeltoVideoAd* self, GtkWidget* widget, GError** error);
VELTO_PUBLIC gboolean velto_video_ad_play_over(VeltoVideoAd* self, GtkWindow* window, GError** error);
VELTO_PUBLIC void velto_video_ad_pause(VeltoVideoAd* self);
VELTO_PUBLIC void velto_video_ad_resume(VeltoVideoAd* self);
VELTO_PUBLIC gboolean velto_video_ad_skip(VeltoVideoAd* self);
VELTO_PUBLIC void velto_video_ad_stop(VeltoVideoAd* self);

VELTO_PUBLIC VeltoVideoAdState velto_video_ad_get_state(VeltoVideoAd* self);
VELTO_PUBLIC VeltoVideoAdInfo* velto_video_ad_get_info(VeltoVideoAd* self);
VELTO_PUBLIC double velto_video_ad_get_current_time(VeltoVideoAd* self);
VELTO_PUBLIC GList* velto_video_ad_get_companions(VeltoVideoAd* self);
VELTO_PUBLIC gboolean velto_video_ad_is_muted(VeltoVideoAd* self);
VELTO_PUBLIC void velto_video_ad_set_muted(VeltoVideoAd* self, gboolean muted);
VELTO_PUBLIC double velto_video_ad_get_volume(VeltoVideoAd* self);
VELTO_PUBLIC void velto_video_ad_set_volume(VeltoVideoAd* self, double volume);
VELTO_PUBLIC gboolean velto_video_ad_get_fullscreen(VeltoVideoAd* self);
VELTO_PUBLIC void velto_video_ad_set_fullscreen(VeltoVideoAd* self, gboolean fullscreen);

G_END_DECLS
