// wakerlyctl: says what a run of wakerly would do and why, what is wrong on this machine, and what
// to do about it. It changes nothing unless it is told to.

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <optional>
#include <sstream>
#include <string>

#include "ctl/answer.h"
#include "ctl/doctor.h"
#include "ctl/explain.h"
#include "ctl/ids.h"
#include "ctl/library_trial.h"
#include "ctl/lock.h"
#include "ctl/log.h"
#include "ctl/prefs.h"
#include "driver/home_owner.h"
#include "driver/standard_streams.h"
#include "esd/util/program_version.h"
#include "platform/folder_making.h"

namespace {

using ctl::Answer;

constexpr int kMostRuns = 1'000'000;

struct CommandLine {
  bool as_json = false;
  ctl::ExplainOptions explain;
  ctl::DoctorOptions doctor;
  ctl::LockOptions lock;
  ctl::LogOptions log;
  std::optional<std::string> key;
  std::string tried_library;
};

CLI::App* AddCommand(CLI::App& app, CommandLine& line, const char* name, const char* description) {
  CLI::App* const command = app.add_subcommand(name, description);
  command->add_flag("--json", line.as_json, "Print JSON, for machines");
  return command;
}

void AddCommands(CLI::App& app, CommandLine& line) {
  CLI::App* const explain =
      AddCommand(app, line, "explain", "What a run now would do, and why, in the order of a run");
  explain->add_flag("--scheduled", line.explain.is_scheduled, "A run that the schedule starts");
  explain->add_option("--at", line.explain.at, "The date of the run; nothing else is moved")
      ->type_name("YYYY-MM-DD");
  AddCommand(app, line, "prefs", "All preferences, with where each value comes from")
      ->add_option("KEY", line.key, "This one alone");
  CLI::App* const doctor =
      AddCommand(app, line, "doctor", "What is wrong on this machine, and what to do about it");
  doctor->add_flag("--load-library", line.doctor.loads_library,
                   "Load the client library, too, in a process of its own");
  CLI::App* const lock = AddCommand(app, line, "lock", "Who holds the locks, and since when");
  CLI::Option* const clear = lock->add_flag("--clear", line.lock.clear,
                                            "Remove a preference file's lock that was left behind");
  lock->add_flag("--yes", line.lock.yes, "Do not ask before that")->needs(clear);
  CLI::App* const log = AddCommand(app, line, "log", "The lines of the last run, and its outcome");
  log->add_option("--runs", line.log.runs, "How many runs")
      ->type_name("NUMBER")
      ->check(CLI::Range(1, kMostRuns));
  log->add_flag("--follow", line.log.follow, "Go on with what comes")
      ->excludes(log->get_option("--json"));
  AddCommand(app, line, "ids", "All identifiers, with their meaning");
  CLI::App* const trial = app.add_subcommand(ctl::kTrialCommand)->group("");
  trial->add_option("library", line.tried_library)->required();
}

bool HasCommand(const CLI::App& app, const std::string& name) {
  return !app.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; })
              .empty();
}

int RunCommand(const std::string& name, const CommandLine& line) {
  if (name == "explain") {
    const std::optional<Answer> answer = ctl::Explain(line.explain);
    if (answer) return ctl::Print(*answer, line.as_json);
    return ctl::Refuse("--at: not a date of the form YYYY-MM-DD: " + *line.explain.at);
  }
  if (name == "doctor") return ctl::Print(ctl::Examine(line.doctor), line.as_json);
  if (name == ctl::kTrialCommand) ctl::LoadForTrial(line.tried_library);
  if (name == "lock") {
    ctl::LockOptions options = line.lock;
    options.as_json = line.as_json;
    return ctl::Print(options.clear ? ctl::ClearLocks(options) : ctl::ShowLocks(), line.as_json);
  }
  if (name == "log") return ctl::Print(ctl::ShowLog(line.log), line.as_json);
  if (name == "prefs") return ctl::Print(ctl::ShowPrefs(line.key), line.as_json);
  return ctl::Print(ctl::ListIdentifiers(), line.as_json);
}

// What the parser prints: a help or version text that was asked for, or what is wrong.
int PrintUsage(const CLI::App& app, const CLI::ParseError& error) {
  std::ostringstream text;
  if (app.exit(error, text, text) == 0) return ctl::PrintText(text.str());
  return ctl::Refuse(std::string(error.what()) + "; see wakerlyctl --help");
}

int Run(int argc, char** argv) {
  // As a run does: root with another user's home folder looks as that user.
  const std::optional<uid_t> other_user = wakerly::BecomeHomeOwner();
  platform::OnlyPretendToMakeFolders();
  // A reader that goes away is told by the write that fails.
  std::signal(SIGPIPE, SIG_IGN);

  CommandLine line;
  line.doctor.was_root = other_user.has_value();
  CLI::App app("What a run of wakerly would do and why, and what is wrong on this machine.",
               "wakerlyctl");
  app.set_version_flag("--version", std::string("wakerlyctl ") + esd::ProgramVersion());
  app.require_subcommand(1);
  AddCommands(app, line);
  // The parser would only say that a command is missing.
  if (argc > 1 && argv[1][0] != '-' && !HasCommand(app, argv[1])) {
    return ctl::Refuse("no such command: " + std::string(argv[1]) + "; see wakerlyctl --help");
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return PrintUsage(app, error);
  }
  return RunCommand(app.get_subcommands().front()->get_name(), line);
}

}  // namespace

int main(int argc, char** argv) {
  wakerly::OpenClosedStreams();
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    return ctl::Refuse(error.what());
  }
}
