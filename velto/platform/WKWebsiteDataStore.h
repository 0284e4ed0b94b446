// Supplied by the platform: cookies and website data of the session that the library's web views use. It is
// the library's own session; the host application's is never touched.
#pragma once

#include "velto/Export.h"

#include <functional>
#include <string>
#include <vector>

namespace velto {

struct WKWebsiteDataRecord {
  std::string displayName;  // usually the site's domain
};

// Main thread; completions come later, on the main thread.
class VELTO_EXPORT WKWebsiteDataStore {
 public:
  virtual ~WKWebsiteDataStore() = default;

  virtual std::vector<std::string> allWebsiteDataTypes() const = 0;
  virtual void fetchDataRecordsOfTypes(const std::vector<std::string>& types,
                                       std::function<void(std::vector<WKWebsiteDataRecord>)> completion) = 0;
  virtual void removeDataOfTypes(const std::vector<std::string>& types,
                                 const std::vector<WKWebsiteDataRecord>& records,
                                 std::function<void()> completion) = 0;

  // Deletes cookies made since that time (seconds since 1970; negative infinity deletes all). Takes effect
  // before any load that is asked for afterwards.
  virtual void removeCookiesSinceDate(double seconds) = 0;
};

}  // namespace velto
