// What a video ad says of itself.
#pragma once

#include <glib-object.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_VIDEO_AD_INFO (velto_video_ad_info_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoVideoAdInfo, velto_video_ad_info, VELTO, VIDEO_AD_INFO, GObject)

VELTO_PUBLIC const char* velto_video_ad_info_get_identifier(VeltoVideoAdInfo* self);
VELTO_PUBLIC const char* velto_video_ad_info_get_title(VeltoVideoAdInfo* self);
VELTO_PUBLIC const char* velto_video_ad_info_get_advertiser(VeltoVideoAdInfo* self);
VELTO_PUBLIC const char* velto_video_ad_info_get_ad_system(VeltoVideoAdInfo* self);
VELTO_PUBLIC guint velto_video_ad_info_get_number(VeltoVideoAdInfo* self);
VELTO_PUBLIC guint velto_video_ad_info_get_count(VeltoVideoAdInfo* self);
VELTO_PUBLIC double velto_video_ad_info_get_duration(VeltoVideoAdInfo* self);
VELTO_PUBLIC double velto_video_ad_info_get_skippable_after(VeltoVideoAdInfo* self);
VELTO_PUBLIC gboolean velto_video_ad_info_leads_somewhere(VeltoVideoAdInfo* self);

G_END_DECLS
