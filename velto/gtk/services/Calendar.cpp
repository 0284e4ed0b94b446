// Loading the calendar module, and handing it events.
#include "velto/gtk/services/Calendar.h"

#include "velto/gtk/Modules.h"
#include "velto/gtk/services/CalendarModule.h"
#include "velto/gtk/services/EventText.h"

#include <chrono>

namespace velto::gtk {
namespace {

bool save(const std::string& event, GCancellable* cancellable) {
  static auto* const saveByModule = moduleFunction<VeltoCalendarSave*>("calendar", "velto_calendar_save");
  GError* fault = nullptr;
  const bool saved = saveByModule && saveByModule(event.c_str(), cancellable, &fault);
  const GErrorOwned error(fault);
  return saved;
}

}  // namespace

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
