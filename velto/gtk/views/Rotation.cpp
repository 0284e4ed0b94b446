// Rotation of windows.
#include "velto/gtk/views/Rotation.h"

#include "velto/core/VeltoConstants.h"
#include "velto/gtk/views/HostWindow.h"
#include "velto/platform/ui/UIViewController.h"

namespace velto::gtk {

Rotation::Rotation(NSNotificationCenter& center) : mask_(UIInterfaceOrientationMaskAll) {
  observer_ = center.addObserver(VeltoNotificationUIInterfaceOrientationMaskLock,
                                 [this](const NSNotification& notification) {
                                   const auto* mask = std::get_if<int64_t>(&notification.object);
                                   mask_ = mask ? *mask : int64_t{UIInterfaceOrientationMaskAll};
                                 });
}

void Rotation::attempt(UIDeviceOrientation orientation) const {
  const bool upright = orientation == 1 || orientation == 2;
  const bool onItsSide = orientation == 3 || orientation == 4;
  if ((upright || onItsSide) && (mask_ >> orientation & 1)) HostWindow::turnAll(orientation, onItsSide);
}

}  // namespace velto::gtk
