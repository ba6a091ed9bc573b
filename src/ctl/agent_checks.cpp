#include "ctl/agent_checks.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "ctl/remedy.h"
#include "ctl/settings.h"
#include "esd/prefs/launch_agent.h"
#include "esd/util/path.h"
#include "esd/util/special_folder.h"
#include "platform/bundle.h"
#include "platform/file_type.h"
#include "platform/folders.h"
#include "platform/property_list.h"

namespace ctl {
namespace {

using platform::FileType;

// Where packaging/macos/build-package puts the agents, below the machine's Library.
///@{
constexpr char kLogonAgent[] = "LaunchAgents/com.vantre.Wakerly-1.0.plist";
constexpr char kProductFolder[] = "Application Support/Vantre/OrlanUpdater/1.0";
///@}

// The program that the agent starts, as launchd.plist(5) names it; empty for none. Its path is one
// of the machine whose tree has the root `root`, which is empty for this one.
std::string ProgramOf(const std::string& agent, const std::string& root) {
  std::optional<std::string> program = platform::ReadPropertyListString(agent, "Program");
  if (!program) {
    const auto arguments = platform::ReadPropertyListStrings(agent, "ProgramArguments");
    if (arguments && !arguments->empty()) program = arguments->front();
  }
  return program && !program->empty() ? root + *program : "";
}

Check LookAtAgent(const std::string& agent, const std::string& root) {
  if (faccessat(AT_FDCWD, agent.c_str(), R_OK, AT_EACCESS) != 0) {
    return {Grade::kBad, Id::kAgentUnreadable,
            agent + " cannot be read: " + std::strerror(errno) + "."};
  }
  if (!platform::ReadPropertyListString(agent, "Label")) {
    return {Grade::kBad, Id::kAgentMalformed, agent + " is no property list with a Label."};
  }
  const std::string program = ProgramOf(agent, root);
  if (program.empty()) {
    return {Grade::kBad, Id::kAgentNoProgram, agent + " names no program to start."};
  }
  const std::string starts = agent + " starts " + program;
  if (platform::TypeOf(program) != FileType::kRegular) {
    return {Grade::kBad, Id::kAgentProgramMissing,
            starts + ", which is missing. Install wakerly again."};
  }
  if (faccessat(AT_FDCWD, program.c_str(), X_OK, AT_EACCESS) != 0) {
    return {Grade::kBad, Id::kAgentProgramNotExecutable, starts + ", which may not be executed.",
            GiveToAll(program, "x")};
  }
  return {Grade::kOk, Id::kAgentOk, starts + "."};
}

// Where the user's agent is, or would be.
std::string UserAgent() {
  std::uint32_t error_code = 0;
  if (const std::optional<std::string> path = esd::GetLaunchAgentPath(error_code)) {
    return platform::StandardizePath(*path);
  }
  return platform::HomeFolder() + "/Library/LaunchAgents/" + esd::kLaunchAgentName;
}

void CheckOwnAgent(Checks& checks, const std::string& agent, const std::string& root) {
  if (platform::IsFound(platform::TypeOf(agent))) {
    Check check = LookAtAgent(agent, root);
    if (check.id == Id::kAgentUnreadable) check.remedy = GiveToAll(agent, "r");
    checks.push_back(check);
  } else {
    checks.push_back({Grade::kNote, Id::kAgentNotInstalled,
                      agent + " is missing: it does not start wakerly on this machine."});
  }
}

// As the updater copies it; nothing where that would write elsewhere. A run looks for the agent by
// way of the folder of the preferences.
std::optional<std::string> CopyAgent(const std::string& shipped, const std::string& agent) {
  if (platform::TypeOf(shipped) != FileType::kRegular || !IsInHome(agent)) return std::nullopt;
  const std::string folder = esd::GetParentFolder(agent);
  const std::string preferences = esd::JoinPath(esd::GetParentFolder(folder), "Preferences");
  return "mkdir -p " + ShellWord(preferences) + " " + ShellWord(folder) + " && cp " +
         ShellWord(shipped) + " " + ShellWord(agent);
}

std::string Time(std::int64_t hour, std::int64_t minute) {
  char text[64];
  std::snprintf(text, sizeof text, "%02lld:%02lld", static_cast<long long>(hour),
                static_cast<long long>(minute));
  return text;
}

void CheckTime(Checks& checks, const std::string& agent, Settings& settings) {
  const auto read = [&](const char* key) {
    return platform::ReadPropertyListInteger(agent, "StartCalendarInterval", key);
  };
  const std::optional<std::int64_t> hour = read("Hour");
  const std::optional<std::int64_t> minute = read("Minute");
  const UserKeys keys;
  const Setting<int> wanted_hour = settings.Read(keys.UpdaterDailyScheduledTimeHH());
  const Setting<int> wanted_minute = settings.Read(keys.UpdaterDailyScheduledTimeMM());
  if (!hour || !minute || !wanted_hour.value || !wanted_minute.value) return;
  if (*hour == *wanted_hour.value && *minute == *wanted_minute.value) return;
  checks.push_back({Grade::kNote, Id::kAgentTimeDiffers,
                    agent + " starts at " + Time(*hour, *minute) + ", and the preferences say " +
                        Time(*wanted_hour.value, *wanted_minute.value) +
                        ". Save the schedule in the updater once more."});
}

void CheckUserAgent(Checks& checks, const std::string& agent, const std::string& shipped,
                    const std::string& root, const PrefsView& preferences) {
  Settings settings(preferences, Source::kUser);
  std::uint32_t error_code = 0;
  if (esd::IsScheduledTaskPresent(error_code, L"")) {
    Check check = LookAtAgent(agent, root);
    // Only what the machine's own agent starts, too, is given rights because an agent names it.
    const bool is_same = ProgramOf(agent, root) == ProgramOf(shipped, root);
    if (check.id == Id::kAgentUnreadable) {
      check.remedy = GiveToUser(agent, "r");
    } else if (check.id == Id::kAgentMalformed || (check.grade != Grade::kOk && !is_same)) {
      check.remedy = CopyAgent(shipped, agent);
    }
    checks.push_back(check);
    return CheckTime(checks, agent, settings);
  }
  if (!settings.Read(UserKeys().IsScheduledTaskAdded()).value.value_or(false)) {
    checks.push_back(
        {Grade::kOk, Id::kAgentNone, agent + " is missing, and the preferences want no schedule."});
    return;
  }
  checks.push_back({Grade::kBad, Id::kAgentMissing,
                    agent + " is missing, and IsScheduledTaskAdded is 1: no check comes by "
                            "schedule. Put it back, and log on again.",
                    CopyAgent(shipped, agent)});
}

}  // namespace

void CheckAgents(Checks& checks, const PrefsView& preferences) {
  std::string support;
  if (!esd::GetSpecialFolder(esd::kLocalApplicationSupport, support, false)) return;
  const std::string library = esd::GetParentFolder(support);
  const std::string root = library.substr(0, library.rfind('/'));
  CheckOwnAgent(checks, esd::JoinPath(library, kLogonAgent), root);
  const std::string product = esd::JoinPath(library, kProductFolder);
  const std::string shipped = esd::JoinPath(product, esd::kLaunchAgentName);
  CheckOwnAgent(checks, shipped, root);
  CheckUserAgent(checks, UserAgent(), shipped, root, preferences);
}

}  // namespace ctl
