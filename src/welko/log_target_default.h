// The log target that writes to a file which it shares with other processes.
//
// Each line is written whole under the file's lock. A file that is empty gets the header block
// first; one that has grown too large is moved to a backup when the target opens, and every 15
// minutes.
#ifndef WELKO_LOG_TARGET_DEFAULT_H_
#define WELKO_LOG_TARGET_DEFAULT_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "welko/log_file_lock.h"
#include "welko/log_target_base.h"

namespace welko {

/// The size in bytes at which the log of a target with the threshold `level` is moved to a backup.
std::int64_t RollOverSize(int level);

/// The one kind of target that Wakerly has. It opens its file by itself when it is given none.
class LogTargetDefault : public LogTargetBase {
 public:
  /// A target called `name`, empty when null; it is enabled, not opened, and has no path yet.
  explicit LogTargetDefault(const char* name);
  /// Closes the target.
  ~LogTargetDefault() override;

 protected:
  /// A file that is new gets mode 0666, so that other users' processes can write the same log; a
  /// failure of that is reported on standard error. Returns whether the stream is good.
  bool OpenStream(std::fstream& stream) override;

 public:
  /// Without a path the file lies in the console user's logs folder.
  bool Open() override;
  bool Close() override;
  /// A line is dropped without notice when the target is not open, when its file was refused, when
  /// the file's lock cannot be taken, and when it cannot be written. The next line is tried again,
  /// on a row of its own.
  bool Log(int level, const LogContext& context, const char* format, std::va_list* arguments,
           std::int64_t time_ms, bool use_lock) override;
  void WriteHeader(int level, const LogContext& context, const HeaderBlock* replacement) override;
  /// Writes `text` and a newline, and flushes. A null text writes the newline alone and puts the
  /// stream into its failure state, which the next line ends.
  virtual void WriteLine(const char* text);

 private:
  bool CheckRollOver();
  bool IsFileEmpty();
  void MendStream();

  std::unique_ptr<LogFileLock> file_lock_;
  HeaderBlock header_;
  std::int64_t last_check_ = 0;           ///< of the file's size, in seconds since the epoch
  std::int64_t last_message_time_ = 0;    ///< in seconds since the epoch
  std::vector<std::string> masked_keys_;  ///< elements whose text no line shows
  bool thread_ids_ = true;
};

}  // namespace welko

#endif  // WELKO_LOG_TARGET_DEFAULT_H_
