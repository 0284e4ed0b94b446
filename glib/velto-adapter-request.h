// What an adapter is asked for.
#pragma once

#include <glib-object.h>

#include "velto-adapter-ad.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_ADAPTER_REQUEST (velto_adapter_request_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoAdapterRequest, velto_adapter_request, VELTO, ADAPTER_REQUEST, GObject)

VELTO_PUBLIC gboolean velto_adapter_request_is_full_screen(VeltoAdapterRequest* self);
VELTO_PUBLIC const char* velto_adapter_request_get_ad_unit(VeltoAdapterRequest* self);
VELTO_PUBLIC const char* velto_adapter_request_get_data(VeltoAdapterRequest* self);
VELTO_PUBLIC void velto_adapter_request_answer(VeltoAdapterRequest* self, VeltoAdapterAd* ad);
VELTO_PUBLIC void velto_adapter_request_fail(VeltoAdapterRequest* self, const GError* error);

G_END_DECLS
