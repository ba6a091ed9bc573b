#include "esd/log/updater_log.h"

#include "esd/log/log_target_registry.h"
#include "esd/util/format_string.h"
#include "esd/util/path.h"
#include "welko/log_level.h"
#include "welko/log_target_default.h"

namespace esd {
namespace {

constexpr const char* kTargetName = "UPDATER";

struct UpdaterLogState {
  welko::LogTargetDefault* logger = nullptr;  // never deleted: the registry holds it until the end
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

bool SetTargetFile(welko::LogTargetDefault& target, const std::string& path) {
  const std::string folder = GetParentFolder(path);
  if (folder.empty()) return false;
  const std::string name = path.substr(path.find_last_of("/\\") + 1);
  target.SetLogFile(name.c_str(), folder.c_str());
  return true;
}

}  // namespace

bool InitUpdaterLog(const std::string& logFilePath, int level, const std::string& product,
                    const std::string& component, const std::string& subComponent) {
  if (level < 1) return false;
  g_log.logger = new welko::LogTargetDefault(kTargetName);
  g_log.logger->SetLogLevel(TargetLevel(level));
  const bool has_file = SetTargetFile(*g_log.logger, logFilePath);
  RegisterLogTarget(g_log.logger);
  g_log.configured_level = level;
  g_log.product = product;
  g_log.component = component;
  g_log.sub_component = subComponent;
  UpdaterLog(kBannerLevel, ">>> Vantre Updater Log Begin >>>");
  return has_file;
}

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
  WriteToTargets(kTargetName, TargetLevel(level), context, message.c_str(), nullptr, 0);
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
