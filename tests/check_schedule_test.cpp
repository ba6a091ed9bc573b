// The date rules, on values alone.
#include "driver/check_schedule.h"

#include <gtest/gtest.h>

#include <boost/date_time/gregorian/formatters.hpp>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/gregorian/parsers.hpp>
#include <random>

namespace {

using boost::gregorian::date;
using wakerly::CheckReason;

constexpr int kDaily = 0, kWeekly = 1, kMonthly = 2, kNever = 3;

std::optional<date> Date(const char* text) {
  if (*text == '\0') return std::nullopt;
  return boost::gregorian::from_string(text);
}

std::string Text(const std::optional<date>& day) { return day ? to_iso_extended_string(*day) : ""; }

std::string Word(CheckReason reason) {
  static constexpr const char* kWords[] = {"unreadable", "never run", "no frequency", "never",
                                           "bad time",   "no date",   "bad date",     "no clock",
                                           "date ahead", "elapsed",   "not elapsed"};
  return kWords[static_cast<int>(reason)];
}

struct Row {
  const char* today;
  std::optional<std::string> last_check;
  std::optional<int> frequency;
  bool due;
  CheckReason reason;
  const char* due_from = "";
  const char* invalid_time = nullptr;
};

const Row kRows[] = {
    // Daily: the next day. The time of day does not matter.
    {"2021-04-30", "2021-04-30T00:00:00", kDaily, false, CheckReason::kNotElapsed, "2021-05-01"},
    {"2021-04-30", "2021-04-29T23:59:59", kDaily, true, CheckReason::kElapsed, "2021-04-30"},
    // Weekly: seven days later.
    {"2021-04-30", "2021-04-24T::", kWeekly, false, CheckReason::kNotElapsed, "2021-05-01"},
    {"2021-04-30", "2021-04-23T::", kWeekly, true, CheckReason::kElapsed, "2021-04-30"},
    // Monthly is not thirty days, and the ends of months count as equal.
    {"2021-03-02", "2021-02-01T::", kMonthly, true, CheckReason::kElapsed, "2021-03-01"},
    {"2021-05-31", "2021-05-01T::", kMonthly, false, CheckReason::kNotElapsed, "2021-06-01"},
    {"2021-04-30", "2021-03-31T::", kMonthly, true, CheckReason::kElapsed, "2021-04-30"},
    {"2024-03-29", "2024-02-29T::", kMonthly, true, CheckReason::kElapsed, "2024-03-29"},
    // Any other frequency is monthly.
    {"2021-04-30", "2021-04-01T::", 4, false, CheckReason::kNotElapsed, "2021-05-01"},
    // The clock went back.
    {"2021-04-30", "2021-05-01T::", kDaily, false, CheckReason::kDateAhead, "2021-04-30"},
    // Texts that are no date and time.
    {"2021-04-30", "2021-04-30", kDaily, true, CheckReason::kNoDate},
    {"2021-04-30", "T10:00:00", kDaily, true, CheckReason::kNoDate},
    {"2021-04-30", "2021-04-30T", kDaily, true, CheckReason::kInvalidTime, "", ""},
    {"2021-04-30", "2021-04-30T1:2:3:", kDaily, true, CheckReason::kInvalidTime, "", "1:2:3:"},
    {"2021-04-30", "2021-04-30T1T:", kDaily, true, CheckReason::kInvalidTime, "", "1T:"},
    {"2021-04-30", "2021-02-30T::", kDaily, true, CheckReason::kInvalidDate},
    {"2021-04-30", "yesterdayT::", kDaily, true, CheckReason::kInvalidDate},
    // Nothing to compare with, to count from, or for.
    {"", "2021-04-30T::", kDaily, true, CheckReason::kClockFails},
    {"2021-04-30", std::nullopt, kDaily, false, CheckReason::kLastCheckUnreadable},
    {"2021-04-30", "", std::nullopt, false, CheckReason::kNeverRun},
    {"2021-04-30", "2020-01-01T::", std::nullopt, false, CheckReason::kFrequencyUnreadable},
    {"2021-04-30", "2020-01-01T10:00", kNever, false, CheckReason::kNever},
};

TEST(CheckSchedule, FollowsFromLastCheckFrequencyAndToday) {
  for (const Row& row : kRows) {
    SCOPED_TRACE("last check \"" + row.last_check.value_or("unreadable") + "\", frequency " +
                 (row.frequency ? std::to_string(*row.frequency) : "unreadable") + ", today " +
                 (*row.today == '\0' ? "unknown" : row.today));
    const auto found = wakerly::ScheduleCheck(row.last_check, row.frequency, Date(row.today));
    EXPECT_EQ(Word(found.reason), Word(row.reason));
    EXPECT_EQ(found.due, row.due);
    EXPECT_EQ(Text(found.due_from), row.due_from);
    EXPECT_EQ(found.invalid_time.value_or("none"), row.invalid_time ? row.invalid_time : "none");
    EXPECT_EQ(found.replaces_last_check, row.reason == CheckReason::kDateAhead);
  }
}

// Found by asking the rule day by day, as runs do.
TEST(CheckSchedule, NamesTheFirstDayOnWhichItIsDue) {
  std::mt19937 chance(20240331);
  const auto days = [&](unsigned below) {
    return boost::gregorian::days(static_cast<int>(chance() % below));
  };
  for (int turn = 0; turn < 3000; ++turn) {
    const int frequency = std::array{kDaily, kWeekly, kMonthly, 99}[chance() % 4];
    const date last = date(1600, 1, 1) + days(3'000'000);
    const std::string text = to_iso_extended_string(last) + "T::";
    const auto is_due = [&](const date& day) {
      return wakerly::ScheduleCheck(text, frequency, day).due;
    };
    date first = last;
    while (!is_due(first)) first += boost::gregorian::days(1);
    const date today = last + days(70);
    EXPECT_EQ(Text(wakerly::ScheduleCheck(text, frequency, today).due_from), Text(first))
        << "last check " << text << ", frequency " << frequency << ", today " << Text(today);
  }
}

// As when another process has changed the values since the first look at them.
TEST(CheckSchedule, ByDateAloneAsksForTheFrequencyLast) {
  const auto reason = [](const char* last_check) {
    return Word(wakerly::ScheduleCheckByDate(last_check, kNever, Date("2021-04-30")).reason);
  };
  EXPECT_EQ(reason(""), "no date");
  EXPECT_EQ(reason("2021-05-01T::"), "date ahead");
  EXPECT_EQ(reason("2020-01-01T::"), "never");
}

}  // namespace
