// The run sequence of Wakerly: one pass over the checks, the notifier and the client library.

#include <sys/types.h>

#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "driver/check_window.h"
#include "driver/enabled_check.h"
#include "driver/home_owner.h"
#include "driver/standard_streams.h"
#include "driver/startup_logging.h"
#include "esd/log/updater_log.h"
#include "esd/prefs/updater_folders.h"
#include "launcher/kodo_launcher.h"
#include "platform/application.h"
#include "platform/standard_error.h"
#include "welko/folder_path.h"
#include "welko/path.h"

namespace {

bool IsScheduledMode(int argc, char** argv) {
  return argc >= 2 && std::strcmp(argv[1], "-mode=scheduled") == 0;
}

bool IsWindowElapsed() {
  const bool elapsed = wakerly::IsScheduledCheckWindowElapsed();
  esd::UpdaterLog(esd::kMessageLevel,
                  elapsed ? "Wakerly : Window is Elapsed and going to launch Tarnik."
                          : "Wakerly : Window is NOT Elapsed.");
  return elapsed;
}

void LaunchNotifier(const std::string& path) {
  esd::UpdaterLogValue(esd::kMessageLevel, "Wakerly: Calling LaunchExecutable for exe ", path);
  // The desktop suite does the notifier's work where it is installed.
  if (!welko::PathExists(welko::DesktopSuitePath())) platform::LaunchApplication(path);
}

void RunClientLibrary() {
  wakerly::VantreUpdaterKodoLauncher::getInstance()->runKodoWorkflow();
  wakerly::VantreUpdaterKodoLauncher::destroyInstance();
}

int Run(bool scheduled) {
  const std::optional<uid_t> owner = wakerly::BecomeHomeOwner();
  wakerly::SetUpStartupLogging();
  if (owner) {
    // An id may be greater than any int.
    esd::UpdaterLogValue(esd::kMessageLevel,
                         "Wakerly : Started as root with another user's home folder; now running "
                         "as uid ",
                         std::to_string(*owner));
  }
  esd::UpdaterLog(esd::kMessageLevel, scheduled ? "Wakerly : Loaded in scheduled mode."
                                                : "Wakerly : Loaded at startup/logon.");
  if (!wakerly::CheckIfUpdaterIsEnabled()) {
    esd::UpdaterLog(esd::kMessageLevel, "Wakerly : WARNING - Updater is NOT enabled.");
  }
  std::string notifier;
  if (!esd::GetNotifierExecutablePath(notifier)) {
    esd::UpdaterLog(esd::kMessageLevel,
                    "Wakerly Error: Unable to get the Orlan Update Notifier executable path.");
    return 1;
  }
  if (scheduled || IsWindowElapsed()) LaunchNotifier(notifier);
  RunClientLibrary();
  return 0;
}

// There may be no memory for a text of one's own.
int EndEarly(const char* reason) {
  platform::WriteToStandardError("wakerly: the run ends early: ");
  platform::WriteToStandardError(reason);
  platform::WriteToStandardError("\n");
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  wakerly::OpenClosedStreams();
  try {
    return Run(IsScheduledMode(argc, argv));
  } catch (const std::exception& error) {
    return EndEarly(error.what());
  } catch (...) {
    return EndEarly("an unknown exception");
  }
}
