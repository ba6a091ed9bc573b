#include "driver/check_window.h"

#include <boost/date_time/gregorian/formatters.hpp>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <optional>
#include <string>

#include "driver/check_schedule.h"
#include "esd/log/updater_log.h"
#include "esd/prefs/updater_prefs.h"

namespace wakerly {
namespace {

using boost::gregorian::date;
using esd::VantreUpdaterPrefs;

// None when the value cannot be read.
template <typename T>
std::optional<T> Read(esd::BasicPref<T>& pref) {
  T value{};
  return pref.Get(value) ? std::optional<T>(std::move(value)) : std::nullopt;
}

// None when the local clock fails.
std::optional<date> Today() {
  try {
    return date(boost::gregorian::day_clock::local_day_ymd());
  } catch (...) {
    return std::nullopt;
  }
}

// False when that throws; a value that cannot be stored is no matter.
bool ReplaceLastCheck(VantreUpdaterPrefs& prefs, const date& today) {
  try {
    prefs.GetLastDateCheckPref().Set(to_iso_extended_string(today));
    return true;
  } catch (...) {
    return false;
  }
}

bool IsCheckDateDue(VantreUpdaterPrefs& prefs) {
  const std::optional<std::string> last_check = Read(prefs.GetLastDateCheckPref());
  std::optional<int> frequency;
  if (last_check) frequency = Read(prefs.GetUpdaterPrefSchedCheckFreqPref());
  const std::optional<date> today = Today();
  const CheckSchedule schedule = ScheduleCheckByDate(last_check, frequency, today);
  if (schedule.invalid_time)
    esd::UpdaterLog(esd::kMessageLevel, "Invalid Time " + *schedule.invalid_time);
  if (schedule.replaces_last_check && !ReplaceLastCheck(prefs, *today)) return true;
  return schedule.due;
}

// Each value is read twice: once for whether there is anything to count from and for, then, in
// IsCheckDateDue, for the count. Another process may change them in between.
bool IsWindowElapsed(VantreUpdaterPrefs& prefs) {
  const std::optional<std::string> last_check = Read(prefs.GetLastDateCheckPref());
  std::optional<int> frequency;
  if (last_check && !last_check->empty()) {
    frequency = Read(prefs.GetUpdaterPrefSchedCheckFreqPref());
  }
  switch (ScheduleCheck(last_check, frequency, Today()).reason) {
    case CheckReason::kLastCheckUnreadable:
    case CheckReason::kNeverRun:
      esd::UpdaterLog(esd::kMessageLevel, "Updater has never been run on the machine.");
      return false;
    case CheckReason::kNever:
      esd::UpdaterLog(esd::kMessageLevel,
                      "Scheduled check frequency has been set to never. No need to run updater.");
      return false;
    default:
      break;
  }
  const bool due = IsCheckDateDue(prefs);
  esd::UpdaterLog(esd::kMessageLevel, due ? "Scheduled check window has elapsed "
                                          : "Scheduled check window has not yet elapsed ");
  return due;
}

}  // namespace

bool IsScheduledCheckWindowElapsed() {
  try {
    return IsWindowElapsed(VantreUpdaterPrefs::GetInstance(false));
  } catch (...) {
    return false;
  }
}

}  // namespace wakerly
