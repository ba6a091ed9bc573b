#include "driver/check_schedule.h"

#include <algorithm>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/gregorian/parsers.hpp>
#include <cstddef>
#include <stdexcept>

#include "esd/prefs/updater_prefs.h"

namespace wakerly {
namespace {

using boost::gregorian::date;
using boost::gregorian::days;

constexpr int kDaily = 0;
constexpr int kWeekly = 1;

CheckSchedule Due(CheckReason reason) { return {.due = true, .reason = reason}; }
CheckSchedule NotDue(CheckReason reason) { return {.due = false, .reason = reason}; }

// Empty fields count, but an empty text has none.
std::ptrdiff_t CountTimeFields(const std::string& time) {
  return time.empty() ? 0 : std::count(time.begin(), time.end(), ':') + 1;
}

// Throws when the text is no date.
date ParseDate(std::string text) {
  text.erase(4, 1).erase(6, 1);
  return boost::gregorian::from_undelimited_string(text);
}

// The latest day of a last check that makes the next one due on `day`.
date LatestDueDate(const date& day, int frequency) {
  if (frequency == kDaily) return day - days(1);
  if (frequency == kWeekly) return day - boost::gregorian::weeks(1);
  return day - boost::gregorian::months(1);
}

// Months differ in length and their ends count as equal: no sum of days tells. None where an end of
// the calendar is too near.
std::optional<date> FirstDueDate(const date& last, int frequency) {
  try {
    const date end(boost::date_time::max_date_time);
    for (date day = last; day < end;) {
      day += days(1);
      if (last <= LatestDueDate(day, frequency)) return day;
    }
  } catch (const std::out_of_range&) {
    // The day a period before is none.
  }
  return std::nullopt;
}

CheckSchedule CompareDates(const date& last, int frequency, const date& today) {
  if (today < last) {
    // The clock went back; from now on the days count from here.
    return {.due = false,
            .reason = CheckReason::kDateAhead,
            .due_from = today,
            .replaces_last_check = true};
  }
  if (frequency == esd::kCheckNever) return NotDue(CheckReason::kNever);
  const bool due = last <= LatestDueDate(today, frequency);
  CheckSchedule schedule = due ? Due(CheckReason::kElapsed) : NotDue(CheckReason::kNotElapsed);
  schedule.due_from = FirstDueDate(last, frequency);
  return schedule;
}

}  // namespace

CheckSchedule ScheduleCheck(const std::optional<std::string>& last_check,
                            std::optional<int> frequency, const std::optional<date>& today) {
  if (!last_check) return NotDue(CheckReason::kLastCheckUnreadable);
  if (last_check->empty()) return NotDue(CheckReason::kNeverRun);
  if (frequency == esd::kCheckNever) return NotDue(CheckReason::kNever);
  return ScheduleCheckByDate(last_check, frequency, today);
}

CheckSchedule ScheduleCheckByDate(const std::optional<std::string>& last_check,
                                  std::optional<int> frequency, const std::optional<date>& today) {
  if (!last_check) return NotDue(CheckReason::kLastCheckUnreadable);
  if (!frequency) return NotDue(CheckReason::kFrequencyUnreadable);
  const std::size_t separator = last_check->find('T');
  if (separator == std::string::npos) return Due(CheckReason::kNoDate);
  const std::string time = last_check->substr(separator + 1);
  if (CountTimeFields(time) != 3) {
    CheckSchedule schedule = Due(CheckReason::kInvalidTime);
    schedule.invalid_time = time;
    return schedule;
  }
  if (separator == 0) return Due(CheckReason::kNoDate);
  try {
    const date last = ParseDate(last_check->substr(0, separator));
    return today ? CompareDates(last, *frequency, *today) : Due(CheckReason::kClockFails);
  } catch (...) {
    return Due(CheckReason::kInvalidDate);
  }
}

}  // namespace wakerly
