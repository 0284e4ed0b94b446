// Tests of applications that use velto-glib-1.0: everything of velto-test-glib-1.0. All of it belongs to the thread that
// runs the application's default main context.
#pragma once

#include "velto-test-answer.h"
#include "velto-test-person.h"
#include "velto-test-request.h"
#include "velto-test-server.h"
