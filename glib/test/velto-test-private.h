// What the sources of the test kit share.
#pragma once

#include <velto/headless/VeltoHeadless.h>

#include "../velto-private.h"
#include "velto-test-glib.h"

namespace velto_test {

// velto-test-answer.cpp
const velto::headless::Answer& answerOf(VeltoTestAnswer* answer);
// velto-test-request.cpp
VeltoTestRequest* newRequest(const velto::NSURLRequest& request);
// velto-test-server.cpp
// What the newest server says.
velto::headless::Answer answerTo(const velto::NSURLRequest& request);

}  // namespace velto_test
