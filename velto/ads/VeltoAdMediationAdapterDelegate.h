// What an adapter tells the controller that shows its ad. Main thread.
#pragma once

#include "velto/Export.h"

namespace velto {

// Implemented by the controllers: a person did something to the network's view.
class VELTO_EXPORT VeltoAdMediationAdapterDelegate {
 public:
  virtual ~VeltoAdMediationAdapterDelegate() = default;
  virtual void mediationBannerDidPress() = 0;
  virtual void mediationBannerDidClose() = 0;
};

}  // namespace velto
