// An ad server's answers as somebody wrote them down, to be given once more.
#pragma once

#include <string>
#include <vector>

#include "sandbox/Rules.h"

namespace velto::preview {

// A file with {"status": 200, "headers": {"x-width": "320"}, "body": TEXT}, or with a list of such, one for each request of an ad;
// the last answers all that follow. The headers may also be a list of {"name", "value"}, and the body any JSON, such as
// mediation instructions. Throws UsageError.
std::vector<sandbox::Answer> readAnswers(const std::string& file);

}  // namespace velto::preview
