#include "ctl/program_forecast.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "launcher/kodo_launcher.h"
#include "platform/file_type.h"
#include "platform/program_file.h"
#include "welko/folder_path.h"
#include "welko/path.h"

namespace ctl {
namespace {

using platform::FileType;
using platform::ProgramFit;

bool MayAccess(const std::string& path, int mode) {
  return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

// What to say of a file that was not found; errno is still that of the look.
std::string DescribeAbsence(const std::string& path, FileType type) {
  if (type == FileType::kNone) return path + " is missing.";
  return path + " cannot be looked at: " + std::strerror(errno) + ".";
}

// Why the system would not start the executable; nothing where a look at it tells no reason.
std::optional<Finding> FindLaunchObstacle(const std::string& path) {
  const FileType type = platform::TypeOf(path);
  if (!platform::IsFound(type)) return Finding{Id::kNotifierMissing, DescribeAbsence(path, type)};
  if (type != FileType::kRegular) return Finding{Id::kNotifierNotAFile, path + " is no file."};
  if (!MayAccess(path, X_OK)) {
    return Finding{Id::kNotifierNotExecutable, path + " may not be executed by this user."};
  }
  switch (platform::FitToRun(path)) {
    case ProgramFit::kNoProgram:
      return Finding{Id::kNotifierNoProgram, path + " is in no format that this system runs."};
    case ProgramFit::kOtherProcessor:
      return Finding{Id::kNotifierNoProgram, path + " is for another processor."};
    case ProgramFit::kNoInterpreter:
      return Finding{Id::kNotifierNoProgram, path + " is a script whose interpreter is missing."};
    case ProgramFit::kFits:
    case ProgramFit::kUnreadable:
      break;
  }
  return std::nullopt;
}

Finding LookAtLibrary(const std::string& path) {
  const FileType type = platform::TypeOf(path);
  if (!platform::IsFound(type)) return {Id::kLibraryMissing, DescribeAbsence(path, type)};
  if (type != FileType::kRegular) return {Id::kLibraryNotAFile, path + " is no file."};
  if (!MayAccess(path, R_OK)) {
    return {Id::kLibraryUnreadable, path + " may not be read by this user."};
  }
  switch (platform::FitToLoad(path)) {
    case ProgramFit::kUnreadable:
      return {Id::kLibraryUnreadable, path + " cannot be read."};
    case ProgramFit::kOtherProcessor:
      return {Id::kLibraryOtherProcessor, path + " is for another processor."};
    case ProgramFit::kNoProgram:
    case ProgramFit::kNoInterpreter:
      return {Id::kLibraryNoLibrary, path + " is no library."};
    case ProgramFit::kFits:
      break;
  }
  return {Id::kLibraryUsable, path + " is a library for this processor."};
}

}  // namespace

Forecast::Notifier ForecastNotifier(const std::optional<std::string>& path, bool is_due) {
  if (!path) {
    return {path, false, {Id::kNotifierNoPath, "The machine has no application support folder."}};
  }
  if (!is_due) return {path, false, {Id::kNotifierNotDue, "No check is due."}};
  const std::string suite = welko::DesktopSuitePath();
  if (welko::PathExists(suite)) {
    return {path, false, {Id::kNotifierSuiteInstalled, suite + " is there."}};
  }
  const std::optional<Finding> obstacle = FindLaunchObstacle(*path);
  if (obstacle) return {path, false, *obstacle};
  return {path, true, {Id::kNotifierStarts, *path + " is a program for this machine."}};
}

Forecast::Library ForecastLibrary() {
  Forecast::Library library;
  library.path = wakerly::ClientLibraryPath();
  library.finding = LookAtLibrary(library.path);
  library.usable = library.finding.id == Id::kLibraryUsable;
  return library;
}

}  // namespace ctl
