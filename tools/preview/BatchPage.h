// The texts of the report over many creatives. Any thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "preview/BatchReport.h"

namespace velto::preview {

// A page without scripts, light or dark as its reader's desktop; pictures and reports stand in the folder.
std::string pageOf(const std::vector<BatchResult>& results, const std::filesystem::path& folder);
// A test case for each creative, for what reads JUnit's files.
std::string junitOf(const std::vector<BatchResult>& results);

// Of a result's document; nothing or "" where that has none.
const JSON::Array& findingsOf(const BatchResult& result);
std::string textOfMember(const JSON& json, const char* key);

}  // namespace velto::preview
