#include "driver/startup_logging.h"

#include <string>

#include "esd/log/updater_log.h"
#include "esd/prefs/updater_folders.h"
#include "esd/util/program_version.h"

namespace wakerly {

// Provisional: a machine without preferences logs to the default file at the default level.
bool SetUpStartupLogging() {
  constexpr int kLevel = 2;
  std::string path;
  if (!esd::GetStartupLogFilePath(path)) return true;
  esd::InitUpdaterLog(path, kLevel, "", "UPDATER", "WAKERLY");
  esd::UpdaterLogNullable(1, "Application Version: ", esd::ProgramVersion());
  esd::UpdaterLogValue(2, "cmdline option: -logFile", path);
  esd::UpdaterLogInt(2, "cmdline option: -logLevel", kLevel);
  return true;
}

}  // namespace wakerly
