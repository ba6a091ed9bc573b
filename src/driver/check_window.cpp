#include "driver/check_window.h"

#include <algorithm>
#include <boost/date_time/gregorian/formatters.hpp>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/gregorian/parsers.hpp>
#include <cstddef>
#include <string>

#include "esd/log/updater_log.h"
#include "esd/prefs/updater_prefs.h"

namespace wakerly {
namespace {

using boost::gregorian::date;
using esd::VantreUpdaterPrefs;

constexpr int kLevel = 2;
constexpr int kDaily = 0;
constexpr int kWeekly = 1;
constexpr int kNever = 3;

// Empty fields count, but an empty text has none.
std::ptrdiff_t CountTimeFields(const std::string& time) {
  return time.empty() ? 0 : std::count(time.begin(), time.end(), ':') + 1;
}

date LatestDueDate(const date& today, int frequency) {
  if (frequency == kDaily) return today - boost::gregorian::days(1);
  if (frequency == kWeekly) return today - boost::gregorian::weeks(1);
  return today - boost::gregorian::months(1);
}

// Throws when the text is no date, and when the local clock fails.
bool IsDateDue(VantreUpdaterPrefs& prefs, std::string last_date, int frequency) {
  last_date.erase(4, 1).erase(6, 1);
  const date last = boost::gregorian::from_undelimited_string(last_date);
  const date today(boost::gregorian::day_clock::local_day_ymd());
  // The clock went back; from now on the days count from here.
  if (today < last) prefs.GetLastDateCheckPref().Set(to_iso_extended_string(today));
  return frequency != kNever && last <= LatestDueDate(today, frequency);
}

bool IsCheckDateDue(VantreUpdaterPrefs& prefs) {
  std::string last_check;
  int frequency = 0;
  if (!prefs.GetLastDateCheckPref().Get(last_check) ||
      !prefs.GetUpdaterPrefSchedCheckFreqPref().Get(frequency)) {
    return false;
  }
  const std::size_t separator = last_check.find('T');
  if (separator == std::string::npos) return true;
  const std::string time = last_check.substr(separator + 1);
  if (CountTimeFields(time) != 3) {
    esd::UpdaterLog(kLevel, "Invalid Time " + time);
    return true;
  }
  const std::string last_date = last_check.substr(0, separator);
  if (last_date.empty()) return true;
  try {
    return IsDateDue(prefs, last_date, frequency);
  } catch (...) {
    return true;
  }
}

bool IsWindowElapsed(VantreUpdaterPrefs& prefs) {
  std::string last_check;
  int frequency = kDaily;
  prefs.GetLastDateCheckPref().Get(last_check);
  if (last_check.empty()) {
    esd::UpdaterLog(kLevel, "Updater has never been run on the machine.");
    return false;
  }
  prefs.GetUpdaterPrefSchedCheckFreqPref().Get(frequency);
  if (frequency == kNever) {
    esd::UpdaterLog(kLevel,
                    "Scheduled check frequency has been set to never. No need to run updater.");
    return false;
  }
  const bool due = IsCheckDateDue(prefs);
  esd::UpdaterLog(kLevel, due ? "Scheduled check window has elapsed "
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
