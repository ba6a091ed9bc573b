// Any text as the last check, on any day: an answer without an exception, never sooner with a
// longer period, and due from the day that it names on, not before. Input: the frequency, today in
// days since a first one, and from the third line on the last check.
#include "driver/check_schedule.h"

#include <algorithm>
#include <boost/date_time/gregorian/gregorian_types.hpp>

#include "fuzz/fuzz.h"

namespace {

using boost::gregorian::date;
using boost::gregorian::days;
using std::string;
using wakerly::CheckReason;
using wakerly::CheckSchedule;
using wakerly::ScheduleCheck;

// A month after the calendar's first day: before, the day a month ago is none, and a check is due.
const date kFirst(1400, 2, 1);
const date kLast(boost::date_time::max_date_time);

long Number(std::string_view text) { return std::strtol(string(text).c_str(), nullptr, 10); }

date Today(std::string_view text) {
  const long count = (kLast - kFirst).days() + 1;
  return kFirst + days((Number(text) % count + count) % count);
}

void CheckFirstDay(const string& last_check, int frequency, const CheckSchedule& schedule) {
  if (!schedule.due_from || schedule.reason == CheckReason::kDateAhead) return;
  const date first = *schedule.due_from;
  if (first <= kFirst) return;
  CHECK(ScheduleCheck(last_check, frequency, first).due);
  CHECK(!ScheduleCheck(last_check, frequency, first - days(1)).due);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::Text(data, size);
  const int frequency = static_cast<int>(Number(fuzz::TakeLine(input)));
  const date today = Today(fuzz::TakeLine(input));
  const string last_check(input);

  const CheckSchedule schedule = ScheduleCheck(last_check, frequency, today);
  CheckFirstDay(last_check, frequency, schedule);
  CHECK(schedule.replaces_last_check == (schedule.reason == CheckReason::kDateAhead));
  CHECK(schedule.invalid_time.has_value() == (schedule.reason == CheckReason::kInvalidTime));

  const bool monthly = ScheduleCheck(last_check, 2, today).due;
  const bool weekly = ScheduleCheck(last_check, 1, today).due;
  const bool daily = ScheduleCheck(last_check, 0, today).due;
  CHECK(!monthly || weekly);
  CHECK(!weekly || daily);
  CHECK(!schedule.due || daily);
  CHECK(!ScheduleCheck(last_check, 3, today).due && !ScheduleCheck("", frequency, today).due);

  const std::size_t separator = last_check.find('T');
  const bool whole = separator != string::npos && separator != 0 &&
                     std::count(last_check.begin() + static_cast<std::ptrdiff_t>(separator),
                                last_check.end(), ':') == 2;
  CHECK(whole || last_check.empty() || monthly);
  return 0;
}
