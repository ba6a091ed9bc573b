#include "ctl/log_follow.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

#include "ctl/answer.h"
#include "ctl/iso_time.h"
#include "ctl/log.h"
#include "ctl/log_part.h"
#include "ctl/page.h"
#include "platform/file_attributes.h"
#include "platform/file_descriptor.h"
#include "welko/log_backups.h"

namespace ctl {
namespace {

class Follower {
 public:
  Follower(std::string path, LogTail tail) : path_(std::move(path)), tail_(std::move(tail)) {
    const std::size_t runs = tail_.splitter.runs().size();
    for (std::size_t run = 0; run < runs; ++run) tail_.splitter.DropLines(run);
    if (runs != 0) shown_ = runs - 1;
    const std::vector<std::string> backups = welko::FindBackups(path_);
    if (!backups.empty()) newest_backup_ = backups.back();
  }

  // Prints what has come since the last look. False when that cannot be written.
  bool Look() {
    if (SizeOf(tail_.log) < tail_.size) TakeFromBackup();
    TakeFrom(tail_.log);
    if (IsReplaced()) {
      Restart();
      tail_.log = platform::OpenRegularFile(path_);
      TakeFrom(tail_.log);
    }
    return WriteOutput(std::exchange(page_, Page()).Render(StandardDisplay()));
  }

 private:
  // Whether the path leads to another file than the one that is open, and whose number nobody else
  // gets while it is.
  bool IsReplaced() const {
    const std::optional<platform::FileStamp> found = platform::StampOf(path_);
    const std::optional<platform::FileStamp> own = platform::StampOf(tail_.log.number());
    return found && (!own || found->inode != own->inode || found->device != own->device);
  }

  void Restart() {
    tail_.size = 0;
    tail_.rest.clear();
  }

  // What the log had before it rolled over, and nobody had read.
  void TakeFromBackup() {
    const std::vector<std::string> backups = welko::FindBackups(path_);
    if (!backups.empty() && newest_backup_ != backups.back()) {
      newest_backup_ = backups.back();
      TakeFrom(platform::OpenRegularFile(newest_backup_));
    }
    Restart();
  }

  void TakeFrom(const platform::FileDescriptor& file) {
    constexpr std::int64_t kMostAtOnce = std::int64_t{1} << 20;
    for (const std::int64_t end = SizeOf(file); tail_.size < end;) {
      const std::string part = ReadPart(file, tail_.size, std::min(end - tail_.size, kMostAtOnce));
      if (part.empty()) return;
      tail_.size += static_cast<std::int64_t>(part.size());
      tail_.rest =
          TakeRows(tail_.splitter, tail_.rest + part, [this](std::size_t run) { Show(run); });
    }
  }

  void Show(std::size_t index) {
    const LogRun& run = tail_.splitter.runs()[index];
    if (shown_ != index) {
      page_.AddTitle("Run of thread " + run.thread + ", begun " + ToIsoTime(run.time) + ":");
    }
    shown_ = index;
    for (const std::string& line : run.lines) page_.AddVerbatim(line);
    if (run.has_end) page_.AddTitle(Headline(run));
    tail_.splitter.DropLines(index);
  }

  const std::string path_;
  LogTail tail_;
  std::string newest_backup_;         ///< which has been read, or was there before
  std::optional<std::size_t> shown_;  ///< the run whose line was printed last
  Page page_;
};

// Waits a quarter of a second. Whether the reader is still there.
bool WaitForReader() {
  constexpr int kPause = 250;  // milliseconds
  pollfd output{STDOUT_FILENO, 0, 0};
  return poll(&output, 1, kPause) <= 0;
}

}  // namespace

bool FollowLog(const std::string& path, LogTail tail) {
  Follower follower(path, std::move(tail));
  while (WaitForReader()) {
    if (!follower.Look()) return errno == EPIPE;
  }
  return true;
}

}  // namespace ctl
