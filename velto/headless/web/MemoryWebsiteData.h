// Cookies and website data of the headless platform: lists
// that a test fills and the library clears. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/WKWebsiteDataStore.h"

#include <memory>

namespace velto::headless {

class VirtualQueue;

class VELTO_EXPORT MemoryWebsiteData : public WKWebsiteDataStore {
 public:
  struct Cookie {
    std::string name;
    double madeAt = 0;  // seconds since 1970
  };

  explicit MemoryWebsiteData(std::shared_ptr<VirtualQueue> queue);

  std::vector<Cookie> cookies;
  std::vector<WKWebsiteDataRecord> records;
  int dataClears = 0;    // calls of removeDataOfTypes
  int cookieClears = 0;  // calls of removeCookiesSinceDate

  std::vector<std::string> allWebsiteDataTypes() const override;
  void fetchDataRecordsOfTypes(const std::vector<std::string>& types,
                               std::function<void(std::vector<WKWebsiteDataRecord>)> completion) override;
  void removeDataOfTypes(const std::vector<std::string>& types, const std::vector<WKWebsiteDataRecord>& which,
                         std::function<void()> completion) override;
  void removeCookiesSinceDate(double seconds) override;

 private:
  std::shared_ptr<VirtualQueue> queue_;
};

}  // namespace velto::headless
