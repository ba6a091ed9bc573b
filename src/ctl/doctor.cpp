#include "ctl/doctor.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/date_time/gregorian/formatters.hpp>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <string>
#include <utility>

#include "ctl/agent_checks.h"
#include "ctl/check.h"
#include "ctl/folder_checks.h"
#include "ctl/forecast.h"
#include "ctl/library_trial.h"
#include "ctl/lock_look.h"
#include "ctl/log_checks.h"
#include "ctl/prefs_checks.h"
#include "ctl/program_forecast.h"
#include "ctl/remedy.h"
#include "ctl/user_name.h"
#include "esd/prefs/updater_folders.h"
#include "welko/log_redaction.h"

namespace ctl {
namespace {

using boost::gregorian::date;

// By the number of the enumerator.
constexpr const char* kGradeNames[] = {"ok", "note", "problem"};
constexpr Tone kTones[] = {Tone::kGood, Tone::kNote, Tone::kBad};

const char* NameOf(Grade grade) { return kGradeNames[static_cast<unsigned>(grade)]; }

Check LookAtPrefsLock(LockedFile file, const std::string& path, bool is_held) {
  const LockLook lock = LookAtLock(file, path, is_held);
  if (!lock.is_held) return {Grade::kOk, Id::kLockFree, "Nobody holds the lock of " + path + "."};
  std::string finding = path + " is locked";
  const std::string origin = DescribeOrigin(lock);
  if (!origin.empty()) finding += " " + origin;
  const auto runs = FindHolders(lock, FindRuns());
  finding += runs.empty() ? ", and no run lives that could hold it: it was left behind."
                          : ", perhaps by " + Describe(runs.front()) + ".";
  return {Grade::kBad, Id::kLockHeld, finding, ClearingCommand(lock)};
}

void CheckPrefsFile(Checks& checks, LockedFile file, const PrefsView& view, bool is_locked) {
  if (view.path()) checks.push_back(LookAtPrefsLock(file, *view.path(), is_locked));
  CheckPrefs(checks, file, view);
}

Check LookAtStamp(const Forecast& run) {
  const std::optional<std::string> stamp = esd::GetUninstallStampPath();
  if (!run.wipes_preferences || !stamp) {
    return {Grade::kOk, Id::kStampOk, "No uninstall stamp outdates the preferences."};
  }
  return {Grade::kBad, Id::kStampWipes,
          *stamp +
              " says that the updater was uninstalled since the preferences were written: the "
              "next run removes " +
              *run.preferences + ". To keep them, remove the stamp.",
          Remove(*stamp)};
}

Check LookAtUpdater(const Forecast::Updater& updater) {
  const auto& [id, why] = updater.finding;
  if (updater.enabled) return {Grade::kOk, id, why};
  if (id == Id::kUpdaterSuppressed) {
    return {Grade::kNote, id, why + " An administrator lifts it with Suppressed = 0."};
  }
  if (id == Id::kUpdaterLocked) {
    const std::optional<std::string> path = esd::GetAdminPrefsFile();
    return {Grade::kBad, id, why,
            ClearingCommand(LookAtLock(LockedFile::kAdministrator, path, true))};
  }
  return {Grade::kBad, id, why};
}

Check LookAtClock(const date& today) {
  const std::string shown = "The clock shows " + to_iso_extended_string(today);
  if (today.year() >= 2020) return {Grade::kOk, Id::kClockOk, shown + "."};
  return {Grade::kBad, Id::kClockBehind,
          shown + ", which has passed long since: no check is due. Set it."};
}

Check LookAtCheck(const Forecast::Check& check) {
  const auto& [id, why] = check.finding;
  switch (id) {
    case Id::kCheckDue:
      return {Grade::kOk, id, why};
    case Id::kCheckNotDue:
      if (!check.next_due) return {Grade::kOk, id, why};
      return {Grade::kOk, id, why + " It has on " + to_iso_extended_string(*check.next_due) + "."};
    case Id::kCheckNever:
      return {Grade::kNote, id, why + " Choose another period in the updater to have checks."};
    case Id::kCheckNeverRun:
      return {Grade::kNote, id, why + " Have the updater check once."};
    case Id::kCheckNotReached:
      return {Grade::kNote, id, why};
    case Id::kCheckInvalidTime:
    case Id::kCheckNoDate:
    case Id::kCheckInvalidDate:
      return {Grade::kNote, id, why + " That ends when the updater has checked."};
    case Id::kCheckDateAhead:
      return {Grade::kBad, id,
              why +
                  " From then on a check is due at each logon, until the updater writes a date. "
                  "See that the clock is right, and log on anew."};
    case Id::kCheckPreferencesLocked:
      return {Grade::kBad, id, why, kClearLock};
    default:
      return {Grade::kBad, id, why};
  }
}

Check LookAtNotifier(const std::optional<std::string>& path) {
  const Forecast::Notifier notifier = ForecastNotifier(path, true);
  const auto& [id, why] = notifier.finding;
  if (notifier.would_start) return {Grade::kOk, id, why};
  if (id == Id::kNotifierSuiteInstalled) {
    return {Grade::kNote, id,
            why +
                " It takes over: the notifier is not started. Where that is "
                "no installed suite, remove it."};
  }
  if (id == Id::kNotifierNotExecutable) {
    return {Grade::kBad, id, why, GiveToAll(*path, "x")};
  }
  return {Grade::kBad, id, why + " Install the updater again.",
          path ? OpenWay(*path) : std::nullopt};
}

Check LookAtLibrary(const Forecast::Library& library) {
  const auto& [id, why] = library.finding;
  if (library.usable) return {Grade::kOk, id, why};
  if (id == Id::kLibraryUnreadable) {
    return {Grade::kBad, id, why, GiveToAll(library.path, "r")};
  }
  return {Grade::kBad, id, why + " Install the updater again.", OpenWay(library.path)};
}

// What the log masks or drops is not told here either. A command that would be another one without
// it, without what a terminal may act on, or without what is no UTF-8, is none.
void Mask(Checks& checks) {
  const auto masked = [](const std::string& text) { return welko::RedactedValue("finding", text); };
  for (Check& check : checks) {
    check.finding = masked(check.finding);
    if (!check.remedy) continue;
    const std::string shown = Printable(masked(*check.remedy));
    if (shown != *check.remedy || !IsUtf8(shown)) check.remedy.reset();
  }
}

Checks LookAtEverything(const DoctorOptions& options) {
  const date today = boost::gregorian::day_clock::local_day();
  const PrefsView user(esd::GetUpdaterPrefsFile(esd::kPrefsFileName));
  const PrefsView administrator(esd::GetAdminPrefsFile());
  const Forecast run = ForecastRun(false, today, user, administrator);
  Checks checks;
  CheckFolders(checks);
  CheckPrefsFile(checks, LockedFile::kUser, user, run.log.finding.id == Id::kLogPreferencesLocked);
  checks.push_back(LookAtStamp(run));
  CheckAgents(checks, user);
  CheckLog(checks, run.log, run.preferences);
  CheckPrefsFile(checks, LockedFile::kAdministrator, administrator,
                 run.updater.finding.id == Id::kUpdaterLocked);
  checks.push_back(LookAtUpdater(run.updater));
  checks.push_back(LookAtClock(today));
  checks.push_back(LookAtCheck(run.check));
  checks.push_back(LookAtNotifier(run.notifier.path));
  checks.push_back(LookAtLibrary(run.library));
  if (options.loads_library && run.library.usable) checks.push_back(TryLibrary(run.library.path));
  Mask(checks);
  return checks;
}

Grade Worst(const Checks& checks) {
  Grade worst = Grade::kOk;
  for (const Check& check : checks) worst = std::max(worst, check.grade);
  return worst;
}

std::string Count(const Checks& checks) {
  std::array<int, 3> counts{};
  for (const Check& check : checks) ++counts[static_cast<unsigned>(check.grade)];
  const auto plural = [](int count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
  };
  return plural(static_cast<int>(checks.size()), "check") + ": " + std::to_string(counts[0]) +
         " ok, " + plural(counts[1], "note") + ", " + plural(counts[2], "problem");
}

Page ToPage(const Checks& checks, const DoctorOptions& options) {
  Page page;
  for (const Check& check : checks) {
    page.AddRow(NameOf(check.grade), kTones[static_cast<unsigned>(check.grade)],
                check.finding + " [" + NameOf(check.id) + "]");
    if (check.remedy) page.AddVerbatim(*check.remedy);
  }
  page.AddTitle(Count(checks));
  if (options.was_root) {
    page.AddVerbatim("Commands without sudo are for " + UserName(geteuid()) + ", not for root.");
  }
  return page;
}

Value ToValue(const Checks& checks) {
  Value::Array list;
  for (const Check& check : checks) {
    list.push_back(Value::Object{{"id", NameOf(check.id)},
                                 {"status", NameOf(check.grade)},
                                 {"finding", check.finding},
                                 {"remedy", check.remedy}});
  }
  return WithVersion({{"status", NameOf(Worst(checks))}, {"checks", std::move(list)}});
}

}  // namespace

Answer Examine(const DoctorOptions& options) {
  const Checks checks = LookAtEverything(options);
  const int status = Worst(checks) == Grade::kBad ? kProblem : kDone;
  return {ToPage(checks, options), ToValue(checks), status};
}

}  // namespace ctl
