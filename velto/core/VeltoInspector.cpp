// Who looks on.
#include "velto/core/VeltoInspector.h"

namespace velto {
namespace {
VeltoInspector* installed = nullptr;
}

void VeltoInspector::install(VeltoInspector* inspector) {
  installed = inspector;
}

VeltoInspector* VeltoInspector::current() {
  return installed;
}

}  // namespace velto
