// What belongs beside the player while a video ad plays.
#pragma once

#include <gtk/gtk.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_VIDEO_AD_COMPANION (velto_video_ad_companion_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoVideoAdCompanion, velto_video_ad_companion, VELTO, VIDEO_AD_COMPANION,
                                  GtkWidget)

VELTO_PUBLIC const char* velto_video_ad_companion_get_identifier(VeltoVideoAdCompanion* self);
VELTO_PUBLIC const char* velto_video_ad_companion_get_ad_slot(VeltoVideoAdCompanion* self);
VELTO_PUBLIC const char* velto_video_ad_companion_get_alternative_text(VeltoVideoAdCompanion* self);
VELTO_PUBLIC int velto_video_ad_companion_get_ad_width(VeltoVideoAdCompanion* self);
VELTO_PUBLIC int velto_video_ad_companion_get_ad_height(VeltoVideoAdCompanion* self);
VELTO_PUBLIC gboolean velto_video_ad_companion_is_end_card(VeltoVideoAdCompanion* self);

G_END_DECLS
