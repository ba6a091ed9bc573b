// The end of a log, its backups included, as far back as it is needed.
#ifndef CTL_LOG_TAIL_H_
#define CTL_LOG_TAIL_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ctl/log_runs.h"
#include "platform/file_descriptor.h"

namespace ctl {

/// What was read of a log.
struct LogTail {
  RunSplitter splitter;  ///< has taken each whole row
  std::string rest;      ///< a last row without its line end
  platform::FileDescriptor log;
  std::int64_t size = 0;  ///< of the log, up to which it was read
};

/// Reads the log `path` and its backups backwards until `runs` runs are whole, or all is read, but
/// 64 MiB at most. Nothing, with errno telling why, when the log cannot be read, or is missing and
/// has no backup.
std::optional<LogTail> ReadLogTail(const std::string& path, std::size_t runs);

/// Has `splitter` take the whole rows of `text`, and gives what stands behind the last line end.
/// `took` is called with the index of each row's run.
template <typename Took>
std::string TakeRows(RunSplitter& splitter, std::string_view text, const Took& took) {
  std::size_t end = 0;
  while ((end = text.find('\n')) != std::string_view::npos) {
    const std::optional<std::size_t> run = splitter.Take(text.substr(0, end));
    if (run) took(*run);
    text.remove_prefix(end + 1);
  }
  return std::string(text);
}

}  // namespace ctl

#endif  // CTL_LOG_TAIL_H_
