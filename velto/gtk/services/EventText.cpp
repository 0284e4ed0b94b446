// Properties and recurrence rules, one line each.
#include "velto/gtk/services/EventText.h"

#include "velto/platform/foundation/Text.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace velto::gtk {
namespace {

constexpr int64_t firstTime = -62135596800;  // 0001-01-01T00:00:00Z
constexpr int64_t lastTime = 253402300799;   // 9999-12-31T23:59:59Z

bool isWritable(std::chrono::sys_seconds time) {
  const int64_t seconds = time.time_since_epoch().count();
  return seconds >= firstTime && seconds <= lastTime;
}

std::string dateTime(std::chrono::sys_seconds time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d%02u%02uT%02d%02d%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

// Text comes from a page: it must stay one value of one line.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\n')
      result += "\\n";
    else if (c == '\\' || c == ';' || c == ',')
      (result += '\\') += c;
    else if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f)
      result += c;
  }
  return result;
}

// ";NAME=1,-2", or nothing when no number is left.
std::string numbers(const char* name, const EKRecurrenceRule::Numbers& values, int most,
                    bool fromTheEnd = true) {
  std::vector<std::string> kept;
  for (const double value : values.value_or(std::vector<double>{})) {
    const double size = fromTheEnd ? std::abs(value) : value;
    if (size >= 1 && size <= most && value == std::trunc(value))
      kept.push_back(std::to_string(static_cast<int>(value)));
  }
  return kept.empty() ? "" : std::string(";") + name + "=" + join(kept, ",");
}

std::string weekdays(const std::optional<std::vector<EKRecurrenceDayOfWeek>>& days) {
  static constexpr std::array words{"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
  std::vector<std::string> kept;
  for (const auto& day : days.value_or(std::vector<EKRecurrenceDayOfWeek>{}))
    if (day.dayOfTheWeek >= 1 && day.dayOfTheWeek <= 7)
      kept.emplace_back(words[static_cast<size_t>(day.dayOfTheWeek - 1)]);
  return kept.empty() ? "" : ";BYDAY=" + join(kept, ",");
}

std::string ruleText(const EKRecurrenceRule& rule) {
  static constexpr std::array words{"DAILY", "WEEKLY", "MONTHLY", "YEARLY"};
  const bool isYearly = rule.frequency == EKRecurrenceFrequencyYearly;
  std::string text = std::string("RRULE:FREQ=") + words.at(static_cast<size_t>(rule.frequency));
  if (rule.interval > 1) text += ";INTERVAL=" + std::to_string(rule.interval);
  if (rule.recurrenceEnd && isWritable(rule.recurrenceEnd->endDate))
    text += ";UNTIL=" + dateTime(rule.recurrenceEnd->endDate);
  text += weekdays(rule.daysOfTheWeek);
  if (rule.frequency != EKRecurrenceFrequencyWeekly) text += numbers("BYMONTHDAY", rule.daysOfTheMonth, 31);
  text += numbers("BYMONTH", rule.monthsOfTheYear, 12, false);
  if (isYearly) text += numbers("BYWEEKNO", rule.weeksOfTheYear, 53);
  if (isYearly) text += numbers("BYYEARDAY", rule.daysOfTheYear, 366);
  // Positions count within what the other lists leave.
  if (text.find(";BY") != std::string::npos) text += numbers("BYSETPOS", rule.setPositions, 366);
  return text;
}

}  // namespace

std::optional<std::string> eventText(const EKEvent& event, const std::string& identifier,
                                     std::chrono::sys_seconds now) {
  if (!isWritable(event.startDate) || (event.endDate && !isWritable(*event.endDate))) return std::nullopt;
  std::vector<std::string> lines{"BEGIN:VEVENT", "UID:" + identifier, "DTSTAMP:" + dateTime(now),
                                 "DTSTART:" + dateTime(event.startDate)};
  // An end before the start is a mistake of the page's, and none at all is allowed.
  if (event.endDate && *event.endDate >= event.startDate)
    lines.push_back("DTEND:" + dateTime(*event.endDate));
  lines.push_back("SUMMARY:" + escaped(event.title));
  if (event.location) lines.push_back("LOCATION:" + escaped(*event.location));
  for (const auto& rule : event.recurrenceRules) lines.push_back(ruleText(rule));
  lines.emplace_back("END:VEVENT");
  return join(lines, "\r\n") + "\r\n";
}

}  // namespace velto::gtk
