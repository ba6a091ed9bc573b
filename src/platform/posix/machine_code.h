// The system's own format of programs and libraries.
#ifndef PLATFORM_POSIX_MACHINE_CODE_H_
#define PLATFORM_POSIX_MACHINE_CODE_H_

#include <string_view>

#include "platform/program_file.h"

namespace platform {

/// What a file is for.
enum class ProgramUse { kRun, kLoad };

/// What `head`, the first bytes of a file, says: kFits, kNoProgram or kOtherProcessor.
ProgramFit FitOfMachineCode(std::string_view head, ProgramUse use);

}  // namespace platform

#endif  // PLATFORM_POSIX_MACHINE_CODE_H_
