// The part of the built-in scenario in which video ads fail, each with its code.
#pragma once

#include <string>

namespace velto::sandbox {

std::string videoCodeRules();  // rules with commas between them, as a scenario holds them

}  // namespace velto::sandbox
