#include "ctl/log.h"

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "ctl/forecast.h"
#include "ctl/iso_time.h"
#include "ctl/log_follow.h"
#include "ctl/log_tail.h"
#include "ctl/prefs_view.h"
#include "ctl/settings.h"
#include "ctl/user_settings.h"
#include "driver/log_settings.h"
#include "esd/prefs/updater_folders.h"

namespace ctl {
namespace {

std::optional<std::string> FindPath() {
  const PrefsView file(esd::GetUpdaterPrefsFile(esd::kPrefsFileName));
  UserSettings user(file);
  return FindLogFile(user);
}

// The last `count` runs that are whole at their begin, and, where there are fewer, those without.
std::vector<LogRun> LastRuns(const RunSplitter& splitter, std::size_t count) {
  const bool is_enough = splitter.begun() >= count;
  std::vector<LogRun> runs;
  for (const LogRun& run : splitter.runs()) {
    if (run.has_begin || !is_enough) runs.push_back(run);
  }
  const std::size_t surplus = runs.size() > count ? runs.size() - count : 0;
  runs.erase(runs.begin(), runs.begin() + static_cast<std::ptrdiff_t>(surplus));
  return runs;
}

// Nothing where the log is not detailed enough to tell.
std::optional<bool> IsComplete(const LogRun& run) {
  const bool tells_nothing = !run.is_scheduled && !run.is_enabled && !run.reaches_library;
  return tells_nothing && !run.has_end ? std::nullopt : std::optional(run.has_end);
}

const char* LibraryState(const LogRun& run) {
  if (!run.reaches_library) return "not-reached";
  if (run.ends_library) return "done";
  return run.has_end ? "failed" : "unfinished";
}

Value ToValue(const LogRun& run) {
  Value::Array lines;
  for (const std::string& line : run.lines) lines.push_back(line);
  const auto& scheduled = run.is_scheduled;
  return Value::Object{{"time", ToIsoTime(run.time)},
                       {"thread", run.thread},
                       {"has_begin", run.has_begin},
                       {"mode", scheduled ? Value(*scheduled ? "scheduled" : "logon") : Value()},
                       {"enabled", run.is_enabled},
                       {"due", run.is_due},
                       {"notifier_called", run.calls_notifier},
                       {"library", LibraryState(run)},
                       {"failure", run.failure},
                       {"complete", IsComplete(run)},
                       {"lines", std::move(lines)}};
}

std::string NoLog(const std::optional<std::string>& path, const std::string& reason) {
  const Forecast run = ForecastRun(false, boost::gregorian::day_clock::local_day());
  const std::string found = path ? ShownLogPath(*path) + ": " + reason : reason;
  return found + "; of a run now: " + run.log.finding.why;
}

std::string DescribeLibrary(const LogRun& run) {
  if (!run.reaches_library) return "library not reached";
  std::string says = run.ends_library ? "library done" : run.has_end ? "library failed" : "library";
  if (run.failure) says += " (" + *run.failure + ")";
  return says;
}

}  // namespace

std::string Headline(const LogRun& run) {
  std::string says = ToIsoTime(run.time) + "  ";
  if (!run.has_begin) says += "without its begin, ";
  const std::optional<bool> complete = IsComplete(run);
  if (!complete) return says + "logged at LogLevel 1, or cut off after the version";
  if (run.is_scheduled) says += *run.is_scheduled ? "scheduled, " : "logon, ";
  if (run.is_enabled) says += *run.is_enabled ? "enabled, " : "not enabled, ";
  if (run.is_due) says += *run.is_due ? "check due, " : "check not due, ";
  says += run.calls_notifier ? "notifier reached, " : "notifier not reached, ";
  says += DescribeLibrary(run);
  return says + (*complete ? ", complete" : ", without an end: cut off, or not over yet");
}

Answer ShowLog(const LogOptions& options) {
  const std::optional<std::string> path = FindPath();
  std::optional<LogTail> tail = path ? ReadLogTail(*path, options.runs) : std::nullopt;
  const std::string error = std::strerror(errno);
  const std::string reason =
      path ? wakerly::FindLogObstacle(*path).value_or(error) : "there is no folder for a log";
  const std::vector<LogRun> runs =
      tail ? LastRuns(tail->splitter, options.runs) : std::vector<LogRun>();
  Answer answer;
  Value::Array list;
  for (const LogRun& run : runs) {
    answer.page.AddTitle(Headline(run));
    for (const std::string& line : run.lines) answer.page.AddVerbatim(line);
    list.push_back(ToValue(run));
  }
  answer.json = WithVersion({{"path", ShownLogPath(path)}, {"runs", std::move(list)}});
  if (!tail || (runs.empty() && !options.follow)) {
    answer.status = kProblem;
    answer.complaint = NoLog(path, tail ? "no run of wakerly" : reason);
  }
  if (!tail || !options.follow) return answer;
  answer.status = Print(answer, false);
  answer.page = Page();
  if (answer.status == kDone && !FollowLog(*path, std::move(*tail))) {
    answer.status = kRefused;
    answer.complaint = std::string("the output cannot be written: ") + std::strerror(errno);
  }
  return answer;
}

}  // namespace ctl
