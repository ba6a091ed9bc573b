// Whether this machine can run a file as a program, or load it as a library.
#ifndef PLATFORM_PROGRAM_FILE_H_
#define PLATFORM_PROGRAM_FILE_H_

#include <string>

namespace platform {

/// What the first bytes of a file tell.
enum class ProgramFit {
  kFits,            ///< nothing there speaks against it
  kUnreadable,      ///< the file cannot be read, which says nothing
  kNoProgram,       ///< it is in no format that the system runs, or loads
  kOtherProcessor,  ///< it is for other machines alone
  kNoInterpreter,   ///< it is a script, and what is to run it is missing
};

/// Whether the system could start the regular file `path`, links followed. Rights are not looked
/// at.
ProgramFit FitToRun(const std::string& path);

/// Whether a process of this program could load the regular file `path` as a library.
ProgramFit FitToLoad(const std::string& path);

}  // namespace platform

#endif  // PLATFORM_PROGRAM_FILE_H_
