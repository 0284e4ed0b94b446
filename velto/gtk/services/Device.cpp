// Facts of the machine from /etc, /sys and GDK.
#include "velto/gtk/services/Device.h"

#include "velto/gtk/GtkVersions.h"
#include "velto/gtk/store/Files.h"
#include "velto/gtk/views/HostWindow.h"
#include "velto/platform/foundation/Text.h"

#include <sys/utsname.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace velto::gtk {
namespace {

constexpr char machineInfo[] = "/etc/machine-info";
constexpr double narrowestTablet = 600;  // points, of the shorter side

utsname kernel() {
  utsname names{};
  if (uname(&names) != 0) throw std::runtime_error("the kernel does not tell its name");
  return names;
}

// Chassis types of the SMBIOS standard (DSP0134, 7.4.1), in systemd's words.
std::string chassisOfFirmware(int64_t type) {
  switch (type) {
    case 3:   // desktop
    case 4:   // low profile
    case 5:   // pizza box
    case 6:   // mini tower
    case 7:   // tower
    case 13:  // all in one
    case 15:  // space-saving
    case 16:  // lunch box
    case 35:  // mini PC
    case 36:  // stick PC
      return "desktop";
    case 8:   // portable
    case 9:   // laptop
    case 10:  // notebook
    case 14:  // sub-notebook
      return "laptop";
    case 11:
      return "handset";
    case 17:
    case 23:  // rack mount
    case 28:  // blade
    case 29:  // blade enclosure
      return "server";
    case 30:
      return "tablet";
    case 31:
    case 32:
      return "convertible";
    default:
      return {};
  }
}

// What makers leave in their tables when they forget to fill them in.
bool isFilledIn(const std::string& product) {
  const std::string text = lowercased(product);
  for (const char* blank : {"to be filled", "system product name", "system version", "default string",
                            "not specified", "not applicable", "undefined"})
    if (text.starts_with(blank)) return false;
  return text != "none" && text != "unknown" && text != "product" && text != "o.e.m.";
}

}  // namespace

Device::Device(const UIScreen& screen, std::string root) : screen_(screen), root_(std::move(root)) {}

std::string Device::name() const {
  return assignment((root_ + machineInfo).c_str(), "PRETTY_HOSTNAME").value_or(g_get_host_name());
}

std::string Device::chassis() const {
  if (auto chosen = assignment((root_ + machineInfo).c_str(), "CHASSIS")) return *chosen;
  const auto type = firstLine((root_ + "/sys/class/dmi/id/chassis_type").c_str());
  if (auto told = chassisOfFirmware(leadingInteger(type.value_or(""))); !told.empty()) return told;
  return firstLine((root_ + "/proc/device-tree/chassis-type").c_str()).value_or("");
}

std::string Device::model() const {
  std::string word = chassis();
  if (word.empty()) word = userInterfaceIdiom() == UIUserInterfaceIdiom::Phone ? "handset" : "desktop";
  word[0] = g_ascii_toupper(word[0]);
  return word;
}

UIUserInterfaceIdiom Device::userInterfaceIdiom() const {
  const std::string word = chassis();
  const auto size = screen_.bounds().size;
  const bool isNarrow = std::min(size.width, size.height) < narrowestTablet;
  return word == "handset" || (word.empty() && isNarrow) ? UIUserInterfaceIdiom::Phone
                                                         : UIUserInterfaceIdiom::Pad;
}

bool Device::isCarried() const {
  const std::string word = chassis();
  return word == "handset" || word == "tablet" || userInterfaceIdiom() == UIUserInterfaceIdiom::Phone;
}

std::string Device::systemName() const {
  const GText name(g_get_os_info(G_OS_INFO_KEY_NAME));
  return name && *name ? name.get() : kernel().sysname;
}

std::string Device::systemVersion() const {
  // Rolling distributions have no version.
  const GText version(g_get_os_info(G_OS_INFO_KEY_VERSION_ID));
  return version && *version ? version.get() : kernel().release;
}

std::string Device::machine() const {
  for (const char* path : {"/sys/class/dmi/id/product_name", "/proc/device-tree/model"})
    if (auto product = firstLine((root_ + path).c_str()); product && isFilledIn(*product)) return *product;
  return kernel().machine;
}

int64_t Device::bootTime() const {
  return leadingInteger(lineAfter("/proc/stat", "btime ").value_or(""));
}

UIDeviceOrientation Device::orientation() const {
  const UIDeviceOrientation set = orientation_.value_or(0);
  if (hasSensor_) return set;
  const auto isUpright = HostWindow::isUpright();
  if (!isUpright) {
    const auto size = screen_.bounds().size;
    return orientation_.value_or(size.height > size.width ? 1 : 0);
  }
  if (*isUpright) return set == 1 || set == 2 ? set : 1;
  return set == 3 || set == 4 ? set : 4;
}

bool isPanelUpright(UIUserInterfaceIdiom idiom, const std::string& root) {
  // Connectors of built-in displays; the first mode is the panel's own.
  std::error_code absent;
  for (const auto& entry : std::filesystem::directory_iterator(root + "/sys/class/drm", absent)) {
    const std::string connector = entry.path().filename();
    const bool isBuiltIn = connector.find("-eDP-") != std::string::npos ||
                           connector.find("-DSI-") != std::string::npos ||
                           connector.find("-LVDS-") != std::string::npos;
    const auto mode = isBuiltIn ? firstLine((entry.path() / "modes").c_str()) : std::nullopt;
    const size_t separator = mode ? mode->find('x') : std::string::npos;
    if (separator != std::string::npos)
      return leadingInteger(mode->substr(separator + 1)) > leadingInteger(*mode);
  }
  return idiom == UIUserInterfaceIdiom::Phone;
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
  scaleChanged_ = Signal(monitor_.get(), monitorScaleChanged, G_CALLBACK(onMonitorChanged), this);
  read();
}

void Screen::read() {
  GdkRectangle geometry{};
  gdk_monitor_get_geometry(monitor_, &geometry);
  if (geometry.width <= 0 || geometry.height <= 0) return;  // not yet told by the display server
  std::lock_guard lock(mutex_);
  bounds_ = {{0, 0}, {static_cast<double>(geometry.width), static_cast<double>(geometry.height)}};
  scale_ = scaleOf(monitor_);
}

void Screen::setSize(std::optional<CGSize> points) {
  std::lock_guard lock(mutex_);
  set_ = points;
}

CGRect Screen::bounds() const {
  std::lock_guard lock(mutex_);
  return set_ ? CGRect{{0, 0}, *set_} : bounds_;
}

double Screen::scale() const {
  std::lock_guard lock(mutex_);
  return scale_;
}

}  // namespace velto::gtk
