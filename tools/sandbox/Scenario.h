// Reads scenario files: JSON documents that hold the rules of the sandbox server. docs/sandbox.md describes
// the format.
#pragma once

#include <string>
#include <vector>

#include "sandbox/Rules.h"

namespace velto::sandbox {

// Throws Error with one line that names the file and the place in it.
std::vector<Rule> readScenarioFile(const std::string& path);

// The same for a text; name stands for the file in errors, and file bodies are relative to folder.
std::vector<Rule> readScenarioText(const std::string& text, const std::string& name,
                                   const std::string& folder);

// The whole file as bytes; throws Error.
std::string readFile(const std::string& path);

}  // namespace velto::sandbox
