#include "ctl/log_tail.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "ctl/log_part.h"
#include "platform/file_descriptor.h"
#include "welko/log_backups.h"

namespace ctl {
namespace {

constexpr std::int64_t kMost = 64 << 20;
constexpr std::int64_t kFirstPart = 256 << 10;

RunSplitter SplitRuns(const std::string& text) {
  RunSplitter splitter;
  TakeRows(splitter, text, [](std::size_t) {});
  return splitter;
}

// Puts before `text` what the file holds up to `end`, piece by piece from its end, until there are
// more than `runs` runs: then the one that begins the part that is wanted has its header, too.
// Whether it got there.
bool Prepend(std::string& text, const platform::FileDescriptor& file, std::int64_t end,
             std::size_t runs) {
  std::int64_t part = kFirstPart;
  while (end > 0) {
    const std::int64_t room = kMost - static_cast<std::int64_t>(text.size());
    const std::int64_t size = std::min({part, end, room});
    if (size <= 0) return true;
    end -= size;
    text.insert(0, ReadPart(file, end, size));
    if (SplitRuns(text).begun() > runs) return true;
    part *= 2;
  }
  return SplitRuns(text).begun() >= runs;
}

}  // namespace

std::optional<LogTail> ReadLogTail(const std::string& path, std::size_t runs) {
  LogTail tail;
  tail.log = platform::OpenRegularFile(path);
  const int error = errno;
  std::vector<std::string> backups = welko::FindBackups(path);
  if (!tail.log && (error != ENOENT || backups.empty())) {
    errno = error;
    return std::nullopt;
  }
  tail.size = SizeOf(tail.log);
  std::string text;
  bool is_enough = Prepend(text, tail.log, tail.size, runs);
  for (; !is_enough && !backups.empty(); backups.pop_back()) {
    const platform::FileDescriptor backup = platform::OpenRegularFile(backups.back());
    if (backup) is_enough = Prepend(text, backup, SizeOf(backup), runs);
  }
  tail.rest = TakeRows(tail.splitter, text, [](std::size_t) {});
  return tail;
}

}  // namespace ctl
