// Supplied by the platform: the user's calendar. The library adds events that a rich-media page asks for,
// when the host application was granted access before; it never asks for it. Main thread.
#pragma once

#include "velto/Export.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// Access of the host application to calendars and pictures:
// 0 not determined, 1 restricted, 2 denied, 3 authorised.
using AuthorizationStatus = int64_t;
inline constexpr AuthorizationStatus AuthorizationStatusNotDetermined = 0;
inline constexpr AuthorizationStatus AuthorizationStatusRestricted = 1;
inline constexpr AuthorizationStatus AuthorizationStatusAuthorized = 3;

enum class EKEntityType : uint64_t { Event = 0, Reminder = 1 };
enum class EKSpan : int64_t { ThisEvent = 0, FutureEvents = 1 };
enum EKRecurrenceFrequency : int64_t {
  EKRecurrenceFrequencyDaily = 0,
  EKRecurrenceFrequencyWeekly = 1,
  EKRecurrenceFrequencyMonthly = 2,
  EKRecurrenceFrequencyYearly = 3,
};

struct VELTO_EXPORT EKRecurrenceDayOfWeek {
  int dayOfTheWeek = 1;  // 1 Sunday … 7 Saturday
  static EKRecurrenceDayOfWeek dayOfWeek(int day) { return {day}; }
  bool operator==(const EKRecurrenceDayOfWeek&) const = default;
};

struct VELTO_EXPORT EKRecurrenceEnd {
  std::chrono::sys_seconds endDate;
  static EKRecurrenceEnd recurrenceEndWithEndDate(std::chrono::sys_seconds date) { return {date}; }
  bool operator==(const EKRecurrenceEnd&) const = default;
};

// When an event comes again. Lists restrict it; negative numbers in them count from the end of the month or
// year. Numbers come from the page as they are: a platform leaves out what is out of range.
struct EKRecurrenceRule {
  using Numbers = std::optional<std::vector<double>>;

  EKRecurrenceFrequency frequency = EKRecurrenceFrequencyDaily;
  int64_t interval = 1;
  std::optional<std::vector<EKRecurrenceDayOfWeek>> daysOfTheWeek;
  Numbers daysOfTheMonth;  // 1 … 31
  Numbers monthsOfTheYear;
  Numbers weeksOfTheYear;  // 1 … 53
  Numbers daysOfTheYear;   // 1 … 366
  Numbers setPositions;
  std::optional<EKRecurrenceEnd> recurrenceEnd;  // nothing: without end
};

struct EKCalendar {
  std::string identifier;
  std::string title;
};

struct EKEvent {
  std::shared_ptr<EKCalendar> calendar;  // null when there was no default calendar
  std::string title;
  std::optional<std::string> location;
  std::chrono::sys_seconds startDate;
  std::optional<std::chrono::sys_seconds> endDate;
  std::vector<EKRecurrenceRule> recurrenceRules;
  void addRecurrenceRule(EKRecurrenceRule rule) { recurrenceRules.push_back(std::move(rule)); }
};

class VELTO_EXPORT EKEventStore {
 public:
  virtual ~EKEventStore() = default;

  virtual AuthorizationStatus authorizationStatusForEntityType(EKEntityType type) const = 0;
  virtual std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() = 0;  // null when there is none
  // Saves it, perhaps later. The completion (may be empty) is called later on the main thread: whether it
  // stands in the calendar now.
  virtual void saveEvent(const EKEvent& event, EKSpan span, std::function<void(bool saved)> completion) = 0;
};

}  // namespace velto
