// What the server says to a request.
#pragma once

#include <gio/gio.h>

#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TEST_TYPE_ANSWER (velto_test_answer_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoTestAnswer, velto_test_answer, VELTO_TEST, ANSWER, GObject)

VELTO_PUBLIC VeltoTestAnswer* velto_test_answer_new(guint status, const char* body);
VELTO_PUBLIC VeltoTestAnswer* velto_test_answer_new_ad(const char* markup, int width, int height);
VELTO_PUBLIC VeltoTestAnswer* velto_test_answer_new_mediation(const char* instructions, int width,
                                                              int height);
VELTO_PUBLIC VeltoTestAnswer* velto_test_answer_new_no_fill(void);
VELTO_PUBLIC VeltoTestAnswer* velto_test_answer_new_no_connection(void);

VELTO_PUBLIC void velto_test_answer_set_header(VeltoTestAnswer* self, const char* name, const char* value);
VELTO_PUBLIC const char* velto_test_answer_get_header(VeltoTestAnswer* self, const char* name);
VELTO_PUBLIC guint velto_test_answer_get_status(VeltoTestAnswer* self);
VELTO_PUBLIC const char* velto_test_answer_get_body(VeltoTestAnswer* self);
VELTO_PUBLIC guint velto_test_answer_get_delay(VeltoTestAnswer* self);
VELTO_PUBLIC void velto_test_answer_set_delay(VeltoTestAnswer* self, guint milliseconds);

G_END_DECLS
