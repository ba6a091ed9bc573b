#include "ctl/log_follow.h"

#include <poll.h>
#include <unistd.h>

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
  Follower(std::string path, LogTail tail)
      : path_(std::move(path)), tail_(std::move(tail)), stamp_(platform::StampOf(path_)) {
    for (const LogRun& run : tail_.splitter.runs()) printed_.push_back(run.lines.size());
    if (!printed_.empty()) shown_ = printed_.size() - 1;
    const std::vector<std::string> backups = welko::FindBackups(path_);
    if (!backups.empty()) newest_backup_ = backups.back();
  }

  // Prints what has come since the last look. False when that cannot be written.
  bool Look() {
    const std::optional<platform::FileStamp> stamp = platform::StampOf(path_);
    if (!stamp) return true;
    const bool is_other =
        !stamp_ || stamp->inode != stamp_->inode || stamp->device != stamp_->device;
    const auto size = static_cast<std::int64_t>(stamp->size);
    stamp_ = stamp;
    if (is_other || size < tail_.size) {
      TakeFromBackup();
      tail_.size = 0;
    }
    if (size > tail_.size) TakeFrom(path_);
    const std::string text = std::exchange(page_, Page()).Render(StandardDisplay());
    return WriteOutput(text);
  }

 private:
  // What the log had before it rolled over, and nobody had read.
  void TakeFromBackup() {
    const std::vector<std::string> backups = welko::FindBackups(path_);
    if (!backups.empty() && newest_backup_ != backups.back()) TakeFrom(backups.back());
    newest_backup_ = backups.empty() ? "" : backups.back();
    tail_.rest.clear();
  }

  void TakeFrom(const std::string& path) {
    const platform::FileDescriptor file = platform::OpenRegularFile(path);
    const std::int64_t end = file ? lseek(file.number(), 0, SEEK_END) : 0;
    if (end <= tail_.size) return;
    const std::string part = ReadPart(file, tail_.size, end - tail_.size);
    tail_.size += static_cast<std::int64_t>(part.size());
    tail_.rest =
        TakeRows(tail_.splitter, tail_.rest + part, [this](std::size_t run) { Show(run); });
  }

  void Show(std::size_t index) {
    const LogRun& run = tail_.splitter.runs()[index];
    printed_.resize(tail_.splitter.runs().size());
    if (shown_ != index) {
      page_.AddTitle("Run of thread " + run.thread + ", begun " + ToIsoTime(run.time) + ":");
    }
    shown_ = index;
    for (; printed_[index] < run.lines.size(); ++printed_[index]) {
      page_.AddVerbatim(run.lines[printed_[index]]);
    }
    if (run.has_end) page_.AddTitle(Headline(run));
  }

  const std::string path_;
  LogTail tail_;
  std::optional<platform::FileStamp> stamp_;
  std::string newest_backup_;         ///< which has been read, or was there before
  std::vector<std::size_t> printed_;  ///< how many lines of each run
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
