// What became of one load.
#pragma once

#include <glib-object.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_TIMELINE (velto_timeline_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoTimeline, velto_timeline, VELTO, TIMELINE, GObject)

VELTO_PUBLIC guint64 velto_timeline_get_load(VeltoTimeline* self);
VELTO_PUBLIC const char* velto_timeline_get_placement(VeltoTimeline* self);
VELTO_PUBLIC const char* velto_timeline_get_reason(VeltoTimeline* self);
VELTO_PUBLIC const char* velto_timeline_get_explanation(VeltoTimeline* self);
VELTO_PUBLIC GVariant* velto_timeline_get_entries(VeltoTimeline* self);
VELTO_PUBLIC char* velto_timeline_to_json(VeltoTimeline* self);

G_END_DECLS
