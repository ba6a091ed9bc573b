// The block that describes the machine at the head of every log file.
#ifndef WELKO_HEADER_BLOCK_H_
#define WELKO_HEADER_BLOCK_H_

#include <string>
#include <utility>
#include <vector>

#include "platform/system_version.h"

namespace welko {

/// The texts of the block. Each line and each entry becomes the message of one log line.
struct HeaderBlock {
  std::string top_line;                                      ///< a rule above the entries
  std::vector<std::pair<std::string, std::string>> entries;  ///< label and value, in writing order
  std::string bottom_line;                                   ///< a rule below the entries

  /// Takes the lines of `other` in place of its own, and its entries: the value of a label that is
  /// here already replaces the one here, a new label goes to the end.
  void Replace(const HeaderBlock& other);
};

/// Describes this machine, whose system has the given version: the desktop suite's version where it
/// is installed, the word size, the interface language, the system's name and version.
HeaderBlock DescribeSystem(const platform::SystemVersion& version);

/// The word size in bits of a machine that uname(2) calls `machine`: 32 for "i386", else 64.
int WordSize(const std::string& machine);

}  // namespace welko

#endif  // WELKO_HEADER_BLOCK_H_
