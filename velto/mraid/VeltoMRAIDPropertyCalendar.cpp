// Reading of calendar events.
#include "velto/mraid/VeltoMRAIDPropertyCalendar.h"

#include "velto/network/FoundationSDKVelto.h"
#include "velto/network/JSONSDKVelto.h"
#include "velto/platform/foundation/Description.h"

#include <cmath>
#include <functional>

namespace velto {
namespace {

using DateFormatterSDKVelto::parseMRAIDDate;
using JSONSDKVelto::stringValue;

using Date = std::optional<std::chrono::sys_seconds>;

std::optional<double> readNumber(const JSON& value) {
  if (const auto* text = value.string()) return leadingNumber(*text);
  return value.number();
}

VeltoMRAIDPropertyCalendarRepeatRule::Numbers numbers(const JSON::Object& object, std::string_view key) {
  const auto* array = JSONSDKVelto::arrayValue(object, key);
  if (!array) return std::nullopt;
  std::vector<double> values;
  for (const auto& element : *array)
    if (const auto value = element.number()) values.push_back(*value);
  return values;
}

std::optional<std::vector<EKRecurrenceDayOfWeek>> weekDays(const JSON::Object& object) {
  const auto* array = JSONSDKVelto::arrayValue(object, "daysInWeek");
  if (!array) return std::nullopt;
  std::vector<EKRecurrenceDayOfWeek> days;
  for (const auto& element : *array) {
    const double day = std::trunc(readNumber(element).value_or(0));
    if (day >= 1 && day <= 7) days.push_back(EKRecurrenceDayOfWeek::dayOfWeek(static_cast<int>(day)));
  }
  return days;
}

Date date(const JSON::Object& object, std::string_view key) {
  const auto text = stringValue(object, key);
  return text ? parseMRAIDDate(*text) : std::nullopt;
}

template <class List, class Number = std::identity>
std::optional<std::string> listText(const List& list, Number number = {}) {
  if (!list) return std::nullopt;
  std::string text;
  for (const auto& element : *list) text += (text.empty() ? "" : ", ") + numberText(number(element));
  return text;
}

std::optional<double> secondsOf(const Date& date) {
  return date ? std::optional(static_cast<double>(date->time_since_epoch().count())) : std::nullopt;
}

}  // namespace

std::shared_ptr<VeltoMRAIDPropertyCalendarRepeatRule> VeltoMRAIDPropertyCalendarRepeatRule::decode(
    const std::string& json) {
  auto record = std::make_shared<VeltoMRAIDPropertyCalendarRepeatRule>();
  return record->_init(json) ? record : nullptr;
}

bool VeltoMRAIDPropertyCalendarRepeatRule::_init(const std::string& json) {
  const auto value = JSONSDKVelto::JSONDictionary(json);
  const auto* object = value ? value->object() : nullptr;
  if (!object) return false;
  frequency = stringValue(*object, "frequency");
  daysInMonth = numbers(*object, "daysInMonth");
  monthsInYear = numbers(*object, "monthsInYear");
  daysInYear = numbers(*object, "daysInYear");
  weeksInYear = numbers(*object, "weeksInYear");
  expires = date(*object, "expires");
  daysInWeek = weekDays(*object);
  if (frequency == "weekly")
    frequencyEvent = EKRecurrenceFrequencyWeekly;
  else if (frequency == "monthly")
    frequencyEvent = EKRecurrenceFrequencyMonthly;
  else if (frequency == "yearly")
    frequencyEvent = EKRecurrenceFrequencyYearly;
  return true;
}

std::string VeltoMRAIDPropertyCalendarRepeatRule::description() const {
  return Description("VeltoMRAIDPropertyCalendarRepeatRule", this)
      .field("Frequency", frequency)
      .field("FrequencyEvent", static_cast<uint64_t>(frequencyEvent))
      .field("DaysInWeek",
             listText(daysInWeek, [](const auto& day) { return static_cast<double>(day.dayOfTheWeek); }))
      .field("DaysInMonth", listText(daysInMonth))
      .field("MonthsInYear", listText(monthsInYear))
      .field("DaysInYear", listText(daysInYear))
      .field("WeeksInYear", listText(weeksInYear))
      .field("Expires", secondsOf(expires))
      .text();
}

std::shared_ptr<VeltoMRAIDPropertyCalendarEvent> VeltoMRAIDPropertyCalendarEvent::decode(
    const std::string& json) {
  auto record = std::make_shared<VeltoMRAIDPropertyCalendarEvent>();
  return record->_init(json) ? record : nullptr;
}

bool VeltoMRAIDPropertyCalendarEvent::_init(const std::string& json) {
  const auto value = JSONSDKVelto::JSONDictionary(json);
  const auto* object = value ? value->object() : nullptr;
  if (!object) return false;
  const auto text = stringValue(*object, "description");
  const auto begin = date(*object, "start");
  if (!text || !begin) return false;
  idEvent = stringValue(*object, "id");
  descriptionEvent = *text;
  location = stringValue(*object, "location");
  start = *begin;
  end = date(*object, "end");
  reminder = stringValue(*object, "reminder");
  if (const auto rule = stringValue(*object, "recurrence"))
    recurrence = VeltoMRAIDPropertyCalendarRepeatRule::decode(*rule);
  status = stringValue(*object, "status");
  summary = stringValue(*object, "summary");
  transparency = stringValue(*object, "transparency");
  return true;
}

std::string VeltoMRAIDPropertyCalendarEvent::description() const {
  return Description("VeltoMRAIDPropertyCalendarEvent", this)
      .field("Id", idEvent)
      .field("Description", descriptionEvent)
      .field("Location", location)
      .field("Start", secondsOf(start))
      .field("End", secondsOf(end))
      .field("Reminder", reminder)
      .field("Recurrence", recurrence ? std::optional(recurrence->description()) : std::nullopt)
      .field("Status", status)
      .field("Summary", summary)
      .field("Transparency", transparency)
      .text();
}

}  // namespace velto
