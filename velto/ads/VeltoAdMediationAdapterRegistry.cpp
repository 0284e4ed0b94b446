// The table of linked adapters.
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"

#include <map>
#include <mutex>

namespace velto {
namespace {

struct Table {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<VeltoAdMediationAdapterProtocol>> adapters;
};

Table& table() {
  static Table instance;
  return instance;
}

}  // namespace

void VeltoAdMediationAdapterRegistry::registerAdapter(
    const std::string& className, std::shared_ptr<VeltoAdMediationAdapterProtocol> adapter) {
  std::lock_guard lock(table().mutex);
  if (adapter)
    table().adapters[className] = std::move(adapter);
  else
    table().adapters.erase(className);
}

std::shared_ptr<VeltoAdMediationAdapterProtocol> VeltoAdMediationAdapterRegistry::adapterNamed(
    const std::string& className) {
  std::lock_guard lock(table().mutex);
  const auto found = table().adapters.find(className);
  return found == table().adapters.end() ? nullptr : found->second;
}

}  // namespace velto
