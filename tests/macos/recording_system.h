// Stands in for File Manager, Launch Services, Gestalt, SystemConfiguration, Core Foundation and
// the loader, and keeps what they are asked. File Manager serves the tree that HOME and
// WAKERLY_ROOT name.
#ifndef TESTS_MACOS_RECORDING_SYSTEM_H_
#define TESTS_MACOS_RECORDING_SYSTEM_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace test {

struct RecordingSystem {
  std::vector<std::string> calls;                   ///< a line each, with its arguments
  std::string reference;                            ///< the path that the last file reference is of
  std::map<std::string, std::int32_t> open_status;  ///< what LSOpenApplication answers, if not 0
  std::optional<std::pair<unsigned, unsigned>> console_user;
  std::map<std::string, std::int32_t> gestalt;  ///< what it knows
  std::int32_t own_processor = 0;               ///< that this program is for
  bool is_arm64 = false;                        ///< the machine
};

/// The one that all calls of this process go to.
RecordingSystem& System();

/// How many objects of Foundation there are, of those made since it was asked first.
std::size_t ObjectsAlive();

/// Lets the process information answer operatingSystemVersion with 14.2.1.
void AddOperatingSystemVersion();

}  // namespace test

#endif  // TESTS_MACOS_RECORDING_SYSTEM_H_
