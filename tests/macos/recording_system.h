// Stands in for File Manager, Launch Services, Gestalt, SystemConfiguration and Core Foundation,
// and keeps what they are asked. File Manager serves the tree that HOME and WAKERLY_ROOT name.
#ifndef TESTS_MACOS_RECORDING_SYSTEM_H_
#define TESTS_MACOS_RECORDING_SYSTEM_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace test {

struct RecordingSystem {
  /// One line for each call, with its arguments.
  std::vector<std::string> calls;
  /// Core Foundation objects that were handed out and not released.
  int unreleased = 0;
  /// What LSOpenApplication answers.
  std::int32_t open_status = 0;
  /// The console user, if any.
  std::optional<std::pair<unsigned, unsigned>> console_user;
  /// What Gestalt knows.
  std::map<std::string, std::int32_t> gestalt;
};

/// The one that all calls of this process go to.
RecordingSystem& System();

/// Lets the process information answer operatingSystemVersion with 14.2.1.
void AddOperatingSystemVersion();

}  // namespace test

#endif  // TESTS_MACOS_RECORDING_SYSTEM_H_
