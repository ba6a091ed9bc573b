// Reading parts of a file that others may be changing.
#ifndef CTL_LOG_PART_H_
#define CTL_LOG_PART_H_

#include <cstdint>
#include <string>

#include "platform/file_descriptor.h"

namespace ctl {

/// The size of `file` in bytes; 0 where it is not open.
std::int64_t SizeOf(const platform::FileDescriptor& file);

/// The `size` bytes of `file` from `begin` on, or fewer where it has no more, or reading fails.
std::string ReadPart(const platform::FileDescriptor& file, std::int64_t begin, std::int64_t size);

}  // namespace ctl

#endif  // CTL_LOG_PART_H_
