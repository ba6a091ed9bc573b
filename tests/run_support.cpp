#include "tests/run_support.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <cstdlib>

namespace test {
namespace {

void Install(const fs::path& from, const fs::path& to) {
  fs::create_directories(to.parent_path());
  fs::copy_file(from, to);
}

}  // namespace

std::string PrefsText(const std::vector<std::pair<std::string, std::string>>& entries) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Preferences>\n";
  for (const auto& [key, value] : entries) text += "<" + key + ">" + value + "</" + key + ">\n";
  return text + "</Preferences>\n";
}

Lines FirstLines() {
  return {LogLine(">>> Vantre Updater Log Begin >>>"),
          LogLine("Application Version: " WAKERLY_VERSION)};
}

std::string LogLine(const std::string& message, const std::string& level) {
  return "TIME | [" + level + "] |  | UPDATER | WAKERLY |  |  |  | TID | " + message;
}

RunTest::RunTest() {
  // What a run leaves running becomes this process's child, and can be waited for.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  MakeEmptyLog(log);
}

void RunTest::InstallNotifier() const { Install(NOTIFIER, notifier); }
void RunTest::InstallLibrary() const { Install(CLIENT_LIBRARY, library); }

pid_t RunTest::Start(const Lines& arguments, const Settings& settings,
                     const std::function<void()>& prepare) const {
  for (const fs::path& trace : {notifier_trace, library_trace}) fs::remove(trace);
  return StartChild([&] {
    setenv("NOTIFIER_TRACE", notifier_trace.c_str(), 1);
    setenv("KDUPDATER_TRACE", library_trace.c_str(), 1);
    setenv("KDUPDATER_CALLBACK", "request", 1);
    for (const auto& [name, value] : settings) setenv(name.c_str(), value.c_str(), 1);
    std::vector<const char*> argv = {WAKERLY};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    argv.push_back(nullptr);
    if (prepare) prepare();
    execv(WAKERLY, const_cast<char**>(argv.data()));
    return 127;
  });
}

Outcome RunTest::Run(const Lines& arguments, const Settings& settings,
                     const std::function<void()>& prepare) const {
  const int status = WaitFor(Start(arguments, settings, prepare));
  WaitForAllChildren();
  return {status, ReadLog(log), ReadLines(notifier_trace), ReadLines(library_trace)};
}

}  // namespace test
