// Loading the calendar module, and handing it events.
#include "velto/gtk/services/Calendar.h"

#include "velto/gtk/Modules.h"
#include "velto/gtk/services/CalendarModule.h"
#include "velto/gtk/services/EventText.h"

#include <chrono>
#include <filesystem>
#include <sstream>
#include <string>

namespace velto::gtk {
namespace {

constexpr char serviceName[] = "org.gnome.evolution.dataserver.Calendar";  // a version follows

bool save(const std::string& event, GCancellable* cancellable) {
  static auto* const saveByModule = moduleFunction<VeltoCalendarSave*>("calendar", "velto_calendar_save");
  GError* fault = nullptr;
  const bool saved = saveByModule && saveByModule(event.c_str(), cancellable, &fault);
  const GErrorOwned error(fault);
  return saved;
}

// The session bus starts the service when it is called, if it finds a file of its name. Only looked for: to ask the
// service would start it.
bool hasService() {
  std::error_code unreadable;
  if (std::filesystem::exists("/.flatpak-info", unreadable)) return true;  // the files are outside
  const auto variable = [](const char* name, const char* otherwise) {
    const char* value = g_getenv(name);
    return std::string(value && *value ? value : otherwise);
  };
  const std::string own = std::string(g_get_home_dir()) + "/.local/share";
  std::istringstream folders(variable("XDG_DATA_HOME", own.c_str()) + ":" +
                             variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
  for (std::string folder; std::getline(folders, folder, ':');) {
    std::filesystem::directory_iterator file(folder + "/dbus-1/services", unreadable);
    for (; file != std::filesystem::directory_iterator(); file.increment(unreadable))
      if (file->path().filename().string().starts_with(serviceName)) return true;
  }
  return false;
}

}  // namespace

Calendar::Calendar(MainQueue& mainQueue, AuthorizationStatus status)
    : mainQueue_(mainQueue), status_(status) {}

void Calendar::stop() {
  g_cancellable_cancel(cancellable_);
  worker_.stop();
}

AuthorizationStatus Calendar::authorizationStatusForEntityType(EKEntityType type) const {
  if (type != EKEntityType::Event) return AuthorizationStatusNotDetermined;
  if (status_ != AuthorizationStatusAuthorized) return status_;
  if (!hasService_) hasService_ = hasService();
  return *hasService_ ? status_ : AuthorizationStatusRestricted;
}

std::shared_ptr<EKCalendar> Calendar::defaultCalendarForNewEvents() {
  return std::make_shared<EKCalendar>(EKCalendar{"default", "Default"});
}

void Calendar::saveEvent(const EKEvent& event, EKSpan, std::function<void(bool)> completion) {
  const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  const GText identifier(g_uuid_string_random());
  auto text = event.calendar ? eventText(event, identifier.get(), now) : std::nullopt;
  const auto finish = [this, completion = std::move(completion)](bool saved) {
    if (completion) mainQueue_.post([completion, saved] { completion(saved); });
  };
  if (status_ != AuthorizationStatusAuthorized || !text) {
    finish(false);
    return;
  }
  worker_.perform([this, text = std::move(*text), finish] { finish(save(text, cancellable_)); });
}

}  // namespace velto::gtk
