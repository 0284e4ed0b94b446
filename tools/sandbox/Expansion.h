// Fills the placeholders of an answer, {{width}} and the like, from the request that it answers.
#pragma once

#include "sandbox/Record.h"
#include "sandbox/RuleBook.h"

namespace velto::sandbox {

// Replaces {{width}}, {{height}}, {{key}}, {{type}}, {{host}} and {{count}} in the body and the header
// values.
void expand(ChosenAnswer& chosen, const RecordedRequest& request);

}  // namespace velto::sandbox
