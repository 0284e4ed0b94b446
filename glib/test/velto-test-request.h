// A request that the application has sent.
#pragma once

#include <gio/gio.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TEST_TYPE_REQUEST (velto_test_request_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoTestRequest, velto_test_request, VELTO_TEST, REQUEST, GObject)

VELTO_PUBLIC const char* velto_test_request_get_url(VeltoTestRequest* self);
VELTO_PUBLIC const char* velto_test_request_get_method(VeltoTestRequest* self);
VELTO_PUBLIC const char* velto_test_request_get_body(VeltoTestRequest* self);
VELTO_PUBLIC char* velto_test_request_dup_header(VeltoTestRequest* self, const char* name);
VELTO_PUBLIC char* velto_test_request_dup_parameter(VeltoTestRequest* self, const char* name);
VELTO_PUBLIC char* velto_test_request_dup_field(VeltoTestRequest* self, const char* name);

G_END_DECLS
