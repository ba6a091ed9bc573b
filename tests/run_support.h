// A tree to run the program on, and what a run leaves behind.
#ifndef TESTS_RUN_SUPPORT_H_
#define TESTS_RUN_SUPPORT_H_

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/test_support.h"

namespace test {

/// What a user finds when a run has ended, and everything that it started.
struct Outcome {
  int status = -1;  ///< exit status, or 128 and the signal
  Lines log;        ///< with TIME and TID in each line
  Lines notifier;   ///< the notifier's own trace
  Lines library;    ///< the client library's own trace
};

using Settings = std::map<std::string, std::string>;

/// A preference file with these entries, as the program writes it.
std::string PrefsText(const std::vector<std::pair<std::string, std::string>>& entries);

/// The lines that begin every log of a run, and are all that it logs at LogLevel 1.
Lines FirstLines();
/// A line of the program's log, as ReadLog gives it.
std::string LogLine(const std::string& message, const std::string& level = "INFO");

/// The sample library calls back before its request returns, so that no run waits for it. An empty
/// log lies where a run writes it, so that no run meets the lock of another test's.
class RunTest : public TreeTest {
 protected:
  RunTest();

  void InstallNotifier() const;
  void InstallLibrary() const;

  /// Starts wakerly with `arguments`, and `settings` added to its environment, in a child process
  /// that runs `prepare` first. The traces are new ones. Hand the result to WaitFor.
  pid_t Start(const Lines& arguments, const Settings& settings = {},
              const std::function<void()>& prepare = {}) const;
  /// The same, until it and the processes that it started have ended.
  Outcome Run(const Lines& arguments = {}, const Settings& settings = {},
              const std::function<void()>& prepare = {}) const;

  const fs::path notifier_trace = top / "notifier.trace", library_trace = top / "library.trace";
  const fs::path support = root / "Library/Application Support";
  const fs::path library = support / "Vantre/VantreKDClient/kdupdater.dylib";
  const fs::path notifier = support /
                            "Vantre/Welko/Tarnik/Brevo/Orlan Updates Notifier.app/Contents/MacOS" /
                            "Orlan Updates Notifier";
  const fs::path suite = root / "Applications/Utilities/Vantre Lumora/Lumdesk/Lumora.app";
  const fs::path prefs_folder = home / "Library/Application Support/Vantre/OrlanUpdater/1.0";
  const fs::path prefs = prefs_folder / "VantreUpdaterPrefs.dat";
  const fs::path log = prefs_folder / "orlanul.log";
  const fs::path inventory = support / "Vantre/OrlanUpdaterInventory/1.0";
  const fs::path admin_prefs = inventory / "VantreUpdaterAdminPrefs.dat";
};

}  // namespace test

#endif  // TESTS_RUN_SUPPORT_H_
