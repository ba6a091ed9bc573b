#include "ctl/log_part.h"

#include <unistd.h>

#include <cerrno>
#include <optional>

#include "platform/file_attributes.h"

namespace ctl {

std::int64_t SizeOf(const platform::FileDescriptor& file) {
  const std::optional<platform::FileStamp> stamp = platform::StampOf(file.number());
  return stamp ? static_cast<std::int64_t>(stamp->size) : 0;
}

std::string ReadPart(const platform::FileDescriptor& file, std::int64_t begin, std::int64_t size) {
  std::string text(static_cast<std::size_t>(size), '\0');
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t count = pread(file.number(), text.data() + filled, text.size() - filled,
                                begin + static_cast<std::int64_t>(filled));
    if (count == 0 || (count < 0 && errno != EINTR)) break;
    if (count > 0) filled += static_cast<std::size_t>(count);
  }
  text.resize(filled);
  return text;
}

}  // namespace ctl
