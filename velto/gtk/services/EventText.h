// Calendar events as iCalendar (RFC 5545) text, the form in which they are handed to a calendar. Any thread.
#pragma once

#include "velto/platform/EKEventStore.h"

#include <optional>
#include <string>

namespace velto::gtk {

// A VEVENT without alarms, with times in UTC. Numbers of a rule that are out of
// range are left out, and lists that the standard does not allow with its frequency,
// so that calendars take the rest. Nothing for times that no calendar can hold.
std::optional<std::string> eventText(const EKEvent& event, const std::string& identifier,
                                     std::chrono::sys_seconds now);

}  // namespace velto::gtk
