// Loading the calendar module, and handing it events.
#include "velto/gtk/Calendar.h"

#include "velto/gtk/CalendarModule.h"
#include "velto/gtk/EventText.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <chrono>

namespace velto::gtk {
namespace {

constexpr char moduleFile[] = "velto-calendar.so";

// Null where the module is not installed. It stays, as the types of its libraries cannot be taken back.
VeltoCalendarSave* loadModule() {
  for (const auto& path : modulePaths(moduleFile))
    if (void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
      return reinterpret_cast<VeltoCalendarSave*>(dlsym(module, "velto_calendar_save"));
  return nullptr;
}

bool save(const std::string& event, GCancellable* cancellable) {
  static VeltoCalendarSave* const saveByModule = loadModule();
  GError* fault = nullptr;
  const bool saved = saveByModule && saveByModule(event.c_str(), cancellable, &fault);
  const GErrorOwned error(fault);
  return saved;
}

}  // namespace

std::vector<std::filesystem::path> modulePaths(const char* fileName) {
  std::vector<std::filesystem::path> paths;
  if (const char* folder = secure_getenv("VELTO_MODULE_PATH"); folder && *folder)
    paths.emplace_back(std::filesystem::path(folder) / fileName);
  // The library may be a shared one, or part of a program, and its prefix may have been moved.
  Dl_info place{};
  if (dladdr(reinterpret_cast<void*>(&modulePaths), &place) && place.dli_fname) {
    std::error_code unknown;
    const auto folder = std::filesystem::absolute(place.dli_fname, unknown).parent_path();
    paths.push_back(folder / "velto" / fileName);
    paths.push_back(folder / ".." / VELTO_LIBRARY_FOLDER / "velto" / fileName);
  }
  paths.emplace_back(std::filesystem::path(VELTO_MODULE_FOLDER) / fileName);
  return paths;
}

Calendar::Calendar(MainQueue& mainQueue, AuthorizationStatus status)
    : mainQueue_(mainQueue), status_(status) {}

void Calendar::stop() {
  g_cancellable_cancel(cancellable_);
  worker_.stop();
}

AuthorizationStatus Calendar::authorizationStatusForEntityType(EKEntityType type) const {
  return type == EKEntityType::Event ? status_ : AuthorizationStatusNotDetermined;
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
