// Adapter classes that a host application links, by name. The name "VeltoAdMediationAdapterAdMob" is the one
// that items can select, and whose presence requests report.
#pragma once

#include "velto/Export.h"

#include <memory>
#include <string>

namespace velto {

class VeltoAdMediationAdapterProtocol;

class VELTO_EXPORT VeltoAdMediationAdapterRegistry {
 public:
  // Makes an adapter class known for the process; null takes it away. Any thread, before the first load.
  static void registerAdapter(const std::string& className,
                              std::shared_ptr<VeltoAdMediationAdapterProtocol> adapter);
  // Null for a name that nobody has registered.
  static std::shared_ptr<VeltoAdMediationAdapterProtocol> adapterNamed(const std::string& className);
};

}  // namespace velto
