#include "ctl/log_runs.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <utility>

#include "driver/startup_logging.h"
#include "esd/log/updater_log.h"

namespace ctl {
namespace {

constexpr std::string_view kSeparator = " | ";
constexpr std::string_view kTimePattern = "dd/dd/dd dd:dd:dd:ddd";  // d is a digit
constexpr std::size_t kFields = 10;
enum Field { kTime = 0, kComponent = 3, kSubComponent = 4, kThread = 8, kMessage = 9 };

// The last field may hold the separator. Nothing where there are fewer.
std::optional<std::array<std::string_view, kFields>> Split(std::string_view row) {
  std::array<std::string_view, kFields> fields;
  for (std::size_t field = 0; field + 1 < kFields; ++field) {
    const std::size_t end = row.find(kSeparator);
    if (end == std::string_view::npos) return std::nullopt;
    fields[field] = row.substr(0, end);
    row.remove_prefix(end + kSeparator.size());
  }
  fields[kMessage] = row;
  return fields;
}

bool IsTime(std::string_view text) {
  return std::equal(text.begin(), text.end(), kTimePattern.begin(), kTimePattern.end(),
                    [](char found, char expected) {
                      return expected == 'd' ? found >= '0' && found <= '9' : found == expected;
                    });
}

// Two digits of a time, which has the pattern.
int Number(std::string_view time, std::size_t at) {
  return (time[at] - '0') * 10 + (time[at + 1] - '0');
}

std::int64_t ToSeconds(std::string_view time) {
  constexpr int kCentury = 100;  // the line has the last two digits of a year from 2000 on
  std::tm local{};
  local.tm_mon = Number(time, 0) - 1;
  local.tm_mday = Number(time, 3);
  local.tm_year = kCentury + Number(time, 6);
  local.tm_hour = Number(time, 9);
  local.tm_min = Number(time, 12);
  local.tm_sec = Number(time, 15);
  local.tm_isdst = -1;
  return std::mktime(&local);
}

bool IsRule(const std::string& message) {
  return message.size() > 1 && message.find_first_not_of('*') == std::string::npos;
}

// What the message tells of the run that wrote it. The texts are those of driver/ and launcher/.
void Learn(LogRun& run, std::string_view message) {
  constexpr std::string_view kLauncher = "VantreUpdaterKodoLauncher : ";
  run.has_end = message.starts_with("Wakerly Error: Unable to get the Orlan Update Notifier");
  if (message == "Wakerly : Loaded in scheduled mode.") run.is_scheduled = true;
  if (message == "Wakerly : Loaded at startup/logon.") run.is_scheduled = false;
  if (message == "UCIsUpdaterEnabled : UpdaterIsEnabled.") run.is_enabled = true;
  if (message == "Wakerly : WARNING - Updater is NOT enabled.") run.is_enabled = false;
  if (message.starts_with("Wakerly : Window is Elapsed")) run.is_due = true;
  if (message.starts_with("Wakerly : Window is NOT Elapsed")) run.is_due = false;
  if (message.starts_with("Wakerly: Calling LaunchExecutable")) run.calls_notifier = true;
  if (!message.starts_with(kLauncher)) return;
  message.remove_prefix(kLauncher.size());
  run.reaches_library = true;
  run.ends_library = message == "unloaded kodo library";
  const bool is_thrown = message.find("Error encountered in Kodo WorkFlow") != message.npos;
  run.has_end = run.ends_library || is_thrown;
  const bool is_cause =
      message.starts_with("Unable to ") || message.find(" returned error code") != message.npos;
  // What is thrown after a cause does not tell more.
  if (is_cause || (is_thrown && !run.failure)) run.failure = message;
}

}  // namespace

std::optional<LogLine> ParseLogLine(std::string_view row) {
  const auto fields = Split(row);
  if (!fields || !IsTime((*fields)[kTime]) || (*fields)[kComponent] != wakerly::kLogComponent ||
      (*fields)[kSubComponent] != wakerly::kLogSubComponent) {
    return std::nullopt;
  }
  return LogLine{ToSeconds((*fields)[kTime]), std::string((*fields)[kThread]),
                 std::string((*fields)[kMessage]), std::string(row)};
}

void RunSplitter::Begin(Writer& writer, const LogLine& line, bool has_begin) {
  LogRun run;
  run.has_begin = has_begin;
  run.time = line.time;
  run.thread = line.thread;
  writer.run = runs_.size();
  runs_.push_back(std::move(run));
  begun_ += has_begin ? 1U : 0U;
}

std::optional<std::size_t> RunSplitter::Take(std::string_view row) {
  const std::optional<LogLine> line = ParseLogLine(row);
  if (!line) return std::nullopt;
  Writer& writer = writers_[line->thread];
  // The block at the head of a file comes before the banner of the run that writes it, or amidst
  // the lines of one that found the file emptied.
  const bool is_rule = IsRule(line->message);
  if (is_rule || (!writer.header.empty() && !writer.is_header_whole)) {
    writer.is_header_whole = is_rule && !writer.header.empty();
    writer.header.push_back(*line);
    return std::nullopt;
  }
  const bool is_begin = line->message == esd::kBannerMessage;
  if (is_begin || !writer.run) Begin(writer, *line, is_begin);
  LogRun& run = runs_[*writer.run];
  for (LogLine& header : writer.header) run.lines.push_back(std::move(header.text));
  writer.header.clear();
  writer.is_header_whole = false;
  run.lines.push_back(line->text);
  Learn(run, line->message);
  return writer.run;
}

}  // namespace ctl
