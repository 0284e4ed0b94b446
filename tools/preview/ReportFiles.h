// The files of a report, as texts. Any thread.
#pragma once

#include <string>
#include <vector>

#include "preview/Findings.h"
#include "preview/Story.h"

namespace velto::preview {

// Everything that a report's files are made of.
struct ReportMatter {
  std::string creative;  // its file or address
  std::string device;    // "390x844"
  int code = 0;
  double startedAt = 0;  // seconds since 1970
  const Story& story;
  const std::vector<Finding>& findings;
  const Tolerance& tolerance;
  const std::vector<JSON::Object>& requests;  // see Network
  std::string folder;                         // of the report, for its pictures
};

JSON::Object findingsJSON(const ReportMatter& matter);
JSON::Object harOf(const ReportMatter& matter);  // HTTP Archive 1.2
std::string junitOf(const ReportMatter& matter);
std::string htmlOf(const ReportMatter& matter);

// Text for HTML and XML. What XML cannot hold becomes U+FFFD.
std::string escapedMarkup(const std::string& text);

}  // namespace velto::preview
