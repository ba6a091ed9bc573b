// The program's own version.
#ifndef ESD_UTIL_PROGRAM_VERSION_H_
#define ESD_UTIL_PROGRAM_VERSION_H_

namespace esd {

/// The version as the build names it, such as "0.2.0". Lives as long as the process.
const char* ProgramVersion();

}  // namespace esd

#endif  // ESD_UTIL_PROGRAM_VERSION_H_
