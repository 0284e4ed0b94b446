// The user's language and the time zone, from the process's locale. Any thread.
#pragma once

#include "velto/platform/UIDevice.h"

#include <string>
#include <vector>

namespace velto::gtk {

// Languages that the user prefers, best first, as BCP 47 tags
// without repetitions. Never empty: "en" stands for the locale "C".
std::vector<std::string> preferredLanguageTags();

class Locale : public NSLocale {
 public:
  std::string localeIdentifier() const override;  // "sr_Latn_RS" for the POSIX name "sr_RS.UTF-8@latin"
  std::vector<std::string> preferredLanguages() const override { return preferredLanguageTags(); }
};

class TimeZone : public NSTimeZone {
 public:
  int secondsFromGMT() const override;
};

}  // namespace velto::gtk
