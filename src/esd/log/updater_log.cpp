#include "esd/log/updater_log.h"

#include "esd/log/log_target_registry.h"
#include "esd/util/format_string.h"
#include "esd/util/path.h"
#include "platform/file_type.h"
#include "welko/log_level.h"
#include "welko/log_switches.h"
#include "welko/log_target_default.h"
#include "welko/path.h"

namespace esd {
namespace {

constexpr const char* kTargetName = "UPDATER";

struct UpdaterLogState {
  welko::LogTargetDefault* logger = nullptr;  // never deleted: the registry holds it until the end
  bool is_written = false;
  int configured_level = 0;
  std::string product;
  std::string component;
  std::string sub_component;
  std::string extra;
};

UpdaterLogState g_log;

// The table is not monotonic; readers of existing logs rely on it as it is.
int TargetLevel(int level) {
  switch (level) {
    case 3:
    case 4:
      return welko::kLogDebug;
    case 10:
      return 0;
    default:
      return welko::kLogInfo;
  }
}

struct LogFileParts {
  std::string folder;
  std::string name;
};

LogFileParts SplitLogPath(const std::string& path) {
  return {GetParentFolder(path), path.substr(path.find_last_of("/\\") + 1)};
}

bool SetTargetFile(welko::LogTargetDefault& target, const std::string& path) {
  const LogFileParts parts = SplitLogPath(path);
  if (parts.folder.empty()) return false;
  target.SetLogFile(parts.name.c_str(), parts.folder.c_str());
  return true;
}

// A message holds texts of others, and one with a line break could pass for two lines. What the
// target hides stays hidden: no tag and no part of a token that it looks for has such a character.
std::string OnOneRow(const std::string& message) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string row;
  row.reserve(message.size());
  for (const char c : message) {
    if (c == '\n') {
      row += "\\n";
    } else if (c == '\r') {
      row += "\\r";
    } else if (c == '\t') {
      row += "\\t";
    } else if ((c > 0 && c < 0x20) || c == 0x7f) {
      row.append("\\x").append(1, kDigits[c / 16]).append(1, kDigits[c % 16]);
    } else {
      row += c;
    }
  }
  return row;
}

}  // namespace

bool InitUpdaterLog(const std::string& logFilePath, int level, const std::string& product,
                    const std::string& component, const std::string& subComponent) {
  if (level < 1) return false;
  g_log.logger = new welko::LogTargetDefault(kTargetName);
  g_log.logger->SetLogLevel(TargetLevel(level));
  const bool has_file = SetTargetFile(*g_log.logger, logFilePath);
  const bool is_open = RegisterLogTarget(g_log.logger);
  g_log.configured_level = level;
  g_log.product = product;
  g_log.component = component;
  g_log.sub_component = subComponent;
  const auto size = platform::SizeOf(logFilePath);
  UpdaterLog(kBannerLevel, kBannerMessage);
  // A target drops without a word what its disk or its lock does not take.
  const bool is_taken = platform::SizeOf(logFilePath) != size;
  const bool has_its_name =
      has_file && platform::TypeOf(logFilePath) == platform::FileType::kRegular;
  g_log.is_written = is_open && (is_taken || !has_its_name);
  return has_file;
}

std::optional<std::string> UpdaterLogFile(const std::string& logFilePath) {
  LogFileParts parts = SplitLogPath(logFilePath);
  if (parts.folder.empty()) return welko::DefaultLogPath(welko::kDefaultLogName);
  welko::AppendPathComponent(parts.folder,
                             parts.name.empty() ? welko::kDefaultLogName : parts.name);
  return parts.folder;
}

std::int64_t UpdaterLogSizeLimit(int level) {
  return welko::RollOverSize(welko::ApplyLogSwitches(welko::kDefaultLogName, TargetLevel(level)));
}

bool IsUpdaterLogWritten() { return g_log.is_written; }

void UpdaterLog(int level, const std::string& message) {
  if (g_log.configured_level < 1 || level > g_log.configured_level || g_log.logger == nullptr) {
    return;
  }
  const welko::LogContext context = {g_log.product.c_str(),
                                     g_log.component.c_str(),
                                     g_log.sub_component.c_str(),
                                     g_log.extra.c_str(),
                                     "",
                                     ""};
  WriteToTargets(kTargetName, TargetLevel(level), context, OnOneRow(message).c_str(), nullptr, 0);
}

void UpdaterLogValue(int level, const std::string& label, const std::string& value) {
  UpdaterLog(level, label + " = " + value);
}

void UpdaterLogInt(int level, const std::string& label, int number) {
  std::string message;
  FormatString(message, "%0 = %1", label, number);
  UpdaterLog(level, message);
}

void UpdaterLogNullable(int level, const std::string& label, const char* text) {
  UpdaterLog(level, label + (text != nullptr ? text : "<NULL>"));
}

}  // namespace esd
