// The address of a request for a video ad, for applications that play video themselves.
#pragma once

#include <glib-object.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_VAST_REQUEST (velto_vast_request_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoVastRequest, velto_vast_request, VELTO, VAST_REQUEST, GObject)

VELTO_PUBLIC VeltoVastRequest* velto_vast_request_new(const char* host, int width, int height);
VELTO_PUBLIC void velto_vast_request_set_formats(VeltoVastRequest* self, const int* formats, gsize n_formats);
VELTO_PUBLIC void velto_vast_request_set_versions(VeltoVastRequest* self, const int* versions,
                                                  gsize n_versions);
VELTO_PUBLIC char* velto_vast_request_build_url(VeltoVastRequest* self, GError** error);

G_END_DECLS
