// When the updater's next scheduled check is due: the rule alone, from values to a value. It reads
// no preference and no clock, and writes nothing.
#ifndef DRIVER_CHECK_SCHEDULE_H_
#define DRIVER_CHECK_SCHEDULE_H_

#include <boost/date_time/gregorian/greg_date.hpp>
#include <optional>
#include <string>

namespace wakerly {

/// Why a check is due or not.
enum class CheckReason {
  kLastCheckUnreadable,  ///< not due: the last check is not known
  kNeverRun,             ///< not due: the updater has never made one
  kFrequencyUnreadable,  ///< not due: the frequency is not known
  kNever,                ///< not due: no check is wanted
  kInvalidTime,          ///< due: the time of the last check has not three fields
  kNoDate,               ///< due: the last check has no date, or nothing that ends it
  kInvalidDate,          ///< due: the date of the last check is no date
  kClockFails,           ///< due: today is not known
  kDateAhead,            ///< not due: the last check lies after today, which takes its place
  kElapsed,              ///< due: the period since the last check has passed
  kNotElapsed,           ///< not due: it has not passed yet
};

/// What the rule says.
struct CheckSchedule {
  bool due;
  CheckReason reason;
  /// The first day on which the period since the last check has passed; for a date ahead, today,
  /// since the date that takes its place carries no time. None for every other reason.
  std::optional<boost::gregorian::date> due_from = std::nullopt;
  /// The time text, where it is invalid.
  std::optional<std::string> invalid_time = std::nullopt;
  /// Whether the stored last check is to be replaced by today's date.
  bool replaces_last_check = false;
};

/// The whole rule. `last_check` is a date YYYY-MM-DD, "T" and a time HH:MM:SS, or empty when the
/// updater has never run; `frequency` is 0 for daily, 1 for weekly, 3 for never, anything else for
/// monthly. A value that cannot be read is none; no `today` stands for a clock that fails.
CheckSchedule ScheduleCheck(const std::optional<std::string>& last_check,
                            std::optional<int> frequency,
                            const std::optional<boost::gregorian::date>& today);

/// The part of the rule that comes after the questions whether the updater has ever run and whether
/// checks are wanted: an empty `last_check` has no date here, and the frequency counts last.
CheckSchedule ScheduleCheckByDate(const std::optional<std::string>& last_check,
                                  std::optional<int> frequency,
                                  const std::optional<boost::gregorian::date>& today);

}  // namespace wakerly

#endif  // DRIVER_CHECK_SCHEDULE_H_
