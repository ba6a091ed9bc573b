#include "platform/file_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace platform {

void FileDescriptor::Close() {
  if (number_ < 0) return;
  const int error = errno;
  close(std::exchange(number_, -1));
  errno = error;
}

FileDescriptor OpenRegularFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return FileDescriptor();
  if (S_ISREG(status.st_mode)) {
    // What takes the file's place meanwhile must not be waited for.
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file || fstat(file.number(), &status) != 0) return FileDescriptor();
    if (S_ISREG(status.st_mode)) return file;
  }
  errno = EISDIR;
  return FileDescriptor();
}

std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t limit) {
  std::optional<std::string> content = ReadFileStart(path, std::max(limit, limit + 1));
  if (!content || content->size() <= limit) return content;
  errno = EFBIG;
  return std::nullopt;
}

std::optional<std::string> ReadFileStart(const std::string& path, std::size_t size) {
  const FileDescriptor file = OpenRegularFile(path);
  if (!file) return std::nullopt;
  std::string content;
  std::array<char, 4096> block{};
  // Its size alone would not tell: the file may grow meanwhile.
  while (content.size() < size) {
    const ssize_t got =
        read(file.number(), block.data(), std::min(block.size(), size - content.size()));
    if (got == 0) break;
    if (got < 0 && errno != EINTR) return std::nullopt;
    content.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  }
  return content;
}

}  // namespace platform
