#include "ctl/explain.h"

#include <algorithm>
#include <boost/date_time/gregorian/formatters.hpp>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/gregorian/parsers.hpp>
#include <exception>
#include <string_view>
#include <tuple>
#include <utility>

#include "ctl/forecast.h"
#include "ctl/settings.h"

namespace ctl {
namespace {

using boost::gregorian::date;

// The parser takes other texts, too, and counts beyond what a number holds in some of them.
bool IsOfTheForm(const std::string& text) {
  constexpr std::string_view kForm = "0000-00-00";
  return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](char byte, char form) {
    return form == '0' ? byte >= '0' && byte <= '9' : byte == form;
  });
}

// Nothing for a text that is no date of that form.
std::optional<date> ParseDate(const std::string& text) {
  try {
    return IsOfTheForm(text) ? std::optional(boost::gregorian::from_simple_string(text))
                             : std::nullopt;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::optional<std::string> ToText(const std::optional<date>& day) {
  return day ? std::optional(to_iso_extended_string(*day)) : std::nullopt;
}

Value::Object WithFinding(Value::Object members, const Finding& finding) {
  members.push_back({"id", NameOf(finding.id)});
  members.push_back({"why", finding.why});
  return members;
}

Value ToValue(const Forecast& run) {
  const auto& [log, updater, check, notifier, library] =
      std::tie(run.log, run.updater, run.check, run.notifier, run.library);
  return WithVersion(
      {{"mode", run.is_scheduled ? "scheduled" : "logon"},
       {"user", run.user},
       {"at", to_iso_extended_string(run.today)},
       {"preferences", run.preferences},
       {"preferences_state", NameOf(run.preferences_state)},
       {"administrator_preferences", run.administrator_preferences},
       {"wipes_preferences", run.wipes_preferences},
       {"log", WithFinding(
                   {{"path", ShownLogPath(log.path)}, {"level", log.level}, {"writes", log.writes}},
                   log.finding)},
       {"updater", WithFinding({{"enabled", updater.enabled}}, updater.finding)},
       {"check",
        WithFinding({{"due", check.due}, {"next_due", ToText(check.next_due)}}, check.finding)},
       {"notifier", WithFinding({{"path", notifier.path}, {"would_start", notifier.would_start}},
                                notifier.finding)},
       {"library",
        WithFinding({{"path", library.path}, {"usable", library.usable}}, library.finding)},
       {"exit_status", run.exit_status},
       {"settings", run.settings}});
}

void AddStatement(Page& page, const char* label, Tone tone, const std::string& says,
                  const Finding& finding) {
  page.AddRow(label, tone, says + " [" + NameOf(finding.id) + "]");
  page.AddDetail(finding.why);
}

void AddLog(Page& page, const Forecast::Log& log) {
  std::string says = log.writes ? "goes to " + ShownLogPath(*log.path) : "none";
  if (log.writes) says += ", at level " + std::to_string(*log.level);
  const bool is_wanted = log.writes || log.finding.id == Id::kLogOff;
  AddStatement(page, "log", is_wanted ? Tone::kGood : Tone::kBad, says, log.finding);
}

void AddCheck(Page& page, const Forecast::Check& check) {
  std::string says = "not asked for";
  if (check.due) says = *check.due ? "due" : "not due";
  // A date ahead is replaced by the run, so that the next one on that day finds the check due.
  if (check.finding.id == Id::kCheckDateAhead) {
    says += " in this run, but in the next";
  } else if (check.next_due && check.due != true) {
    says += " before " + *ToText(check.next_due);
  }
  AddStatement(page, "check", check.due == false ? Tone::kNote : Tone::kGood, says, check.finding);
}

void AddNotifier(Page& page, const Forecast::Notifier& notifier) {
  const Id id = notifier.finding.id;
  const bool is_wanted =
      notifier.would_start || id == Id::kNotifierNotDue || id == Id::kNotifierSuiteInstalled;
  const Tone tone = notifier.would_start ? Tone::kGood : is_wanted ? Tone::kNote : Tone::kBad;
  AddStatement(page, "notifier", tone, notifier.would_start ? "starts" : "does not start",
               notifier.finding);
}

Page ToPage(const Forecast& run) {
  Page page;
  page.AddTitle(std::string("What a ") + (run.is_scheduled ? "scheduled" : "logon") + " run of " +
                run.user + " on " + to_iso_extended_string(run.today) + " would do:");
  const bool is_fine = run.preferences_state == PrefsState::kLoaded;
  page.AddRow("preferences", is_fine ? Tone::kGood : Tone::kNote,
              run.preferences.value_or("no path"));
  if (!is_fine) page.AddDetail(Describe(run.preferences_state));
  if (run.wipes_preferences) page.AddDetail("An uninstall stamp makes the run remove this file.");
  AddLog(page, run.log);
  AddStatement(page, "updater", run.updater.enabled ? Tone::kGood : Tone::kNote,
               run.updater.enabled ? "enabled" : "not enabled", run.updater.finding);
  AddCheck(page, run.check);
  AddNotifier(page, run.notifier);
  AddStatement(page, "library", run.library.usable ? Tone::kGood : Tone::kBad,
               run.library.usable ? "can be loaded" : "cannot be loaded", run.library.finding);
  page.AddRow("exit status", run.exit_status == 0 ? Tone::kGood : Tone::kBad,
              std::to_string(run.exit_status));
  return page;
}

}  // namespace

std::optional<Answer> Explain(const ExplainOptions& options) {
  const std::optional<date> day =
      options.at ? ParseDate(*options.at)
                 : std::optional<date>(boost::gregorian::day_clock::local_day());
  if (!day) return std::nullopt;
  const Forecast run = ForecastRun(options.is_scheduled, *day);
  return Answer{ToPage(run), ToValue(run), kDone};
}

}  // namespace ctl
