// The calendar event that a page asks to be added (the W3C fields
// that MRAID passes on), and when it comes again. Any thread.
#pragma once

#include "velto/mraid/VeltoMRAIDProperties.h"
#include "velto/platform/EKEventStore.h"

#include <chrono>
#include <vector>

namespace velto {

class VeltoMRAIDPropertyCalendarRepeatRule : public VeltoMRAIDProperty {
 public:
  using Numbers = std::optional<std::vector<double>>;

  static std::shared_ptr<VeltoMRAIDPropertyCalendarRepeatRule> decode(const std::string& json);
  std::string description() const override;

  std::optional<std::string> frequency;  // nothing: the event does not come again
  EKRecurrenceFrequency frequencyEvent = EKRecurrenceFrequencyDaily;  // daily also for an unknown word
  std::optional<std::vector<EKRecurrenceDayOfWeek>> daysInWeek;
  Numbers daysInMonth;
  Numbers monthsInYear;
  Numbers daysInYear;
  Numbers weeksInYear;
  std::optional<std::chrono::sys_seconds> expires;

 private:
  bool _init(const std::string& json);
};

class VeltoMRAIDPropertyCalendarEvent : public VeltoMRAIDProperty {
 public:
  // Null also without a description, or without a start that is a date.
  static std::shared_ptr<VeltoMRAIDPropertyCalendarEvent> decode(const std::string& json);
  std::string description() const override;

  std::optional<std::string> idEvent;
  std::string descriptionEvent;
  std::optional<std::string> location;
  std::chrono::sys_seconds start;
  std::optional<std::chrono::sys_seconds> end;
  std::optional<std::string> reminder;
  std::shared_ptr<VeltoMRAIDPropertyCalendarRepeatRule> recurrence;  // given as a JSON text within the text
  std::optional<std::string> status;
  std::optional<std::string> summary;
  std::optional<std::string> transparency;

 private:
  bool _init(const std::string& json);
};

}  // namespace velto
