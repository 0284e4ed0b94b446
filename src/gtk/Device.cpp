// Facts of the machine from /etc, /sys and GDK.
#include "velto/gtk/Device.h"

#include "velto/gtk/Files.h"
#include "velto/gtk/HostWindow.h"
#include "velto/platform/foundation/Text.h"

#include <sys/utsname.h>

#include <stdexcept>

namespace velto::gtk {
namespace {

constexpr char machineInfo[] = "/etc/machine-info";

utsname kernel() {
  utsname names{};
  if (uname(&names) != 0) throw std::runtime_error("the kernel does not tell its name");
  return names;
}

// Chassis types of the SMBIOS standard (DSP0134, 7.4.1) that are no desktop.
std::string chassis() {
  if (auto chosen = assignment(machineInfo, "CHASSIS")) return *chosen;
  switch (leadingInteger(firstLine("/sys/class/dmi/id/chassis_type").value_or(""))) {
    case 8:   // portable
    case 9:   // laptop
    case 10:  // notebook
    case 14:  // sub-notebook
      return "laptop";
    case 11:
      return "handset";
    case 30:
      return "tablet";
    case 31:
    case 32:
      return "convertible";
    default:
      return "desktop";
  }
}

}  // namespace

std::string Device::name() const {
  return assignment(machineInfo, "PRETTY_HOSTNAME").value_or(g_get_host_name());
}

std::string Device::model() const {
  std::string word = chassis();
  word[0] = g_ascii_toupper(word[0]);
  return word;
}

std::string Device::systemVersion() const {
  // Rolling distributions have no version.
  const GText version(g_get_os_info(G_OS_INFO_KEY_VERSION_ID));
  return version && *version ? version.get() : kernel().release;
}

std::string Device::machine() const {
  for (const char* path : {"/sys/class/dmi/id/product_name", "/proc/device-tree/model"})
    if (auto product = firstLine(path)) return *product;
  return kernel().machine;
}

int64_t Device::bootTime() const {
  return leadingInteger(lineAfter("/proc/stat", "btime ").value_or(""));
}

UIDeviceOrientation Device::orientation() const {
  auto* window = HostWindow::mappedWidget();
  if (!window) return orientation_;
  const bool upright = gtk_widget_get_height(window) >= gtk_widget_get_width(window);
  const bool setUpright = orientation_ == 1 || orientation_ == 2;
  const bool setOnItsSide = orientation_ == 3 || orientation_ == 4;
  if (upright) return setUpright ? orientation_ : 1;
  return setOnItsSide ? orientation_ : 4;
}

Screen::Screen() {
  if (!gtk_is_initialized() || !gdk_display_get_default()) return;
  monitors_ = GPtr<GListModel>::retain(gdk_display_get_monitors(gdk_display_get_default()));
  monitorsChanged_ = Signal(monitors_.get(), "items-changed", G_CALLBACK(onMonitorsChanged), this);
  watchFirstMonitor();
}

void Screen::onMonitorsChanged(GListModel*, guint, guint, guint, gpointer screen) noexcept {
  static_cast<Screen*>(screen)->watchFirstMonitor();
}

void Screen::onMonitorChanged(GdkMonitor*, GParamSpec*, gpointer screen) noexcept {
  static_cast<Screen*>(screen)->read();
}

void Screen::watchFirstMonitor() {
  geometryChanged_ = Signal();
  scaleChanged_ = Signal();
  monitor_ = GPtr<GdkMonitor>::adopt(static_cast<GdkMonitor*>(g_list_model_get_item(monitors_, 0)));
  if (!monitor_) return;  // the last known values stand until another is plugged in
  geometryChanged_ = Signal(monitor_.get(), "notify::geometry", G_CALLBACK(onMonitorChanged), this);
  scaleChanged_ = Signal(monitor_.get(), "notify::scale-factor", G_CALLBACK(onMonitorChanged), this);
  read();
}

void Screen::read() {
  GdkRectangle geometry{};
  gdk_monitor_get_geometry(monitor_, &geometry);
  if (geometry.width <= 0 || geometry.height <= 0) return;  // not yet told by the display server
  std::lock_guard lock(mutex_);
  bounds_ = {{0, 0}, {static_cast<double>(geometry.width), static_cast<double>(geometry.height)}};
  scale_ = gdk_monitor_get_scale_factor(monitor_);
}

CGRect Screen::bounds() const {
  std::lock_guard lock(mutex_);
  return bounds_;
}

double Screen::scale() const {
  std::lock_guard lock(mutex_);
  return scale_;
}

}  // namespace velto::gtk
