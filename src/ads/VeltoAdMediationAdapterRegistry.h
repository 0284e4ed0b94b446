// Adapters that a host application links, by class name.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace velto {

class VeltoAdMediationCoreAdapter;

class VeltoAdMediationAdapterRegistry {
 public:
  using Factory = std::function<std::shared_ptr<VeltoAdMediationCoreAdapter>()>;

  // Makes an adapter known for the process; an empty factory takes it away. Any thread, before the first load.
  static void registerAdapter(const std::string& className, Factory factory);
  static bool has(const std::string& className);
};

}  // namespace velto
