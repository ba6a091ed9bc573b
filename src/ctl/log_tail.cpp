#include "ctl/log_tail.h"

#include <unistd.h>

#include <algorithm>
#include <optional>
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
    text = ReadPart(file, end, size) + text;
    if (SplitRuns(text).begun() > runs) return true;
    part *= 2;
  }
  return SplitRuns(text).begun() >= runs;
}

}  // namespace

std::optional<LogTail> ReadLogTail(const std::string& path, std::size_t runs) {
  const platform::FileDescriptor log = platform::OpenRegularFile(path);
  if (!log) return std::nullopt;
  LogTail tail;
  tail.size = lseek(log.number(), 0, SEEK_END);
  std::string text;
  bool is_enough = Prepend(text, log, tail.size, runs);
  std::vector<std::string> backups = welko::FindBackups(path);
  for (; !is_enough && !backups.empty(); backups.pop_back()) {
    const platform::FileDescriptor backup = platform::OpenRegularFile(backups.back());
    if (backup) is_enough = Prepend(text, backup, lseek(backup.number(), 0, SEEK_END), runs);
  }
  tail.rest = TakeRows(tail.splitter, text, [](std::size_t) {});
  return tail;
}

}  // namespace ctl
