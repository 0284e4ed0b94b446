// Clearing lists, with completions on the main queue.
#include "velto/headless/web/MemoryWebsiteData.h"

#include "velto/headless/VirtualQueue.h"

#include <algorithm>

namespace velto::headless {

MemoryWebsiteData::MemoryWebsiteData(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}

std::vector<std::string> MemoryWebsiteData::allWebsiteDataTypes() const {
  return {"WKWebsiteDataTypeCookies", "WKWebsiteDataTypeDiskCache", "WKWebsiteDataTypeLocalStorage"};
}

void MemoryWebsiteData::fetchDataRecordsOfTypes(
    const std::vector<std::string>& types, std::function<void(std::vector<WKWebsiteDataRecord>)> completion) {
  queue_->requireMain("WKWebsiteDataStore::fetchDataRecordsOfTypes");
  auto found = types.empty() ? std::vector<WKWebsiteDataRecord>{} : records;
  queue_->post([completion = std::move(completion), found = std::move(found)] { completion(found); });
}

void MemoryWebsiteData::removeDataOfTypes(const std::vector<std::string>& types,
                                          const std::vector<WKWebsiteDataRecord>& which,
                                          std::function<void()> completion) {
  queue_->requireMain("WKWebsiteDataStore::removeDataOfTypes");
  ++dataClears;
  if (!types.empty())
    std::erase_if(records, [&](const auto& record) {
      return std::any_of(which.begin(), which.end(),
                         [&](const auto& gone) { return gone.displayName == record.displayName; });
    });
  if (completion) queue_->post(std::move(completion));
}

void MemoryWebsiteData::removeCookiesSinceDate(double seconds) {
  queue_->requireMain("WKWebsiteDataStore::removeCookiesSinceDate");
  ++cookieClears;
  std::erase_if(cookies, [&](const Cookie& cookie) { return cookie.madeAt >= seconds; });
}

}  // namespace velto::headless
