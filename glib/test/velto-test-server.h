// The ad server of a test, and with it the whole world outside the application.
#pragma once

#include "velto-test-answer.h"
#include "velto-test-request.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TEST_TYPE_SERVER (velto_test_server_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoTestServer, velto_test_server, VELTO_TEST, SERVER, GObject)

VELTO_PUBLIC VeltoTestServer* velto_test_server_new(void);
VELTO_PUBLIC void velto_test_server_respond(VeltoTestServer* self, const char* part, VeltoTestAnswer* answer);
VELTO_PUBLIC void velto_test_server_respond_once(VeltoTestServer* self, const char* part,
                                                 VeltoTestAnswer* answer);
VELTO_PUBLIC void velto_test_server_set_video(VeltoTestServer* self, const char* address, guint milliseconds);
VELTO_PUBLIC GPtrArray* velto_test_server_get_requests(VeltoTestServer* self, const char* part);
VELTO_PUBLIC char** velto_test_server_dup_opened(VeltoTestServer* self);
VELTO_PUBLIC gboolean velto_test_server_get_pages_finish(VeltoTestServer* self);
VELTO_PUBLIC void velto_test_server_set_pages_finish(VeltoTestServer* self, gboolean pages_finish);

G_END_DECLS
