// The table of linked adapters.
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"

#include <map>
#include <mutex>

#include "velto/core/VeltoUtilities.h"

namespace velto {
namespace {

struct Table {
  std::mutex mutex;
  std::map<std::string, VeltoAdMediationAdapterRegistry::Factory> factories;
};

Table& table() {
  static Table instance;
  return instance;
}

}  // namespace

void VeltoAdMediationAdapterRegistry::registerAdapter(const std::string& className, Factory factory) {
  std::lock_guard lock(table().mutex);
  if (factory)
    table().factories[className] = std::move(factory);
  else
    table().factories.erase(className);
}

bool VeltoAdMediationAdapterRegistry::has(const std::string& className) {
  std::lock_guard lock(table().mutex);
  return table().factories.contains(className);
}

bool VeltoUtilities::isGoogleAdMobAvailable() {
  return VeltoAdMediationAdapterRegistry::has("VeltoAdMediationAdapterAdMob");
}

}  // namespace velto
