// A named destination for log lines, with its level and its file. Its derived class decides what
// a line looks like, and how the file is shared.
#ifndef WELKO_LOG_TARGET_BASE_H_
#define WELKO_LOG_TARGET_BASE_H_

#include <cstdarg>
#include <cstdint>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>

#include "welko/header_block.h"
#include "welko/log_line.h"

namespace welko {

/// The name of a target's file that is given none.
inline constexpr char kDefaultLogName[] = "Welko.log";

/// The path of the log `name` of a target that is given no folder: in the console user's logs
/// folder, which is made when it is missing. Nothing when that folder is not found.
std::optional<std::string> DefaultLogPath(const std::string& name);

/// One thread at a time uses a target; only AddRef may be called from any.
class LogTargetBase {
 protected:
  /// Opens `stream` on the target's file for appending, closing it first when it is open.
  virtual bool OpenStream(std::fstream& stream) = 0;

 public:
  virtual ~LogTargetBase();
  LogTargetBase(const LogTargetBase&) = delete;
  LogTargetBase& operator=(const LogTargetBase&) = delete;

  /// Makes the target ready for Log. False when its file cannot be opened or was refused before.
  virtual bool Open() = 0;
  /// Gives back what Open took. Always true.
  virtual bool Close() = 0;
  /// Writes one line when `level` is at least the target's and the target's file was not refused.
  /// With `arguments`, `format` is filled as by vsnprintf(3); without, it is the message. `time_ms`
  /// is the line's time in milliseconds since the epoch, 0 for now. `use_lock` is false only while
  /// the caller holds the file's lock. Always true.
  virtual bool Log(int level, const LogContext& context, const char* format,
                   std::va_list* arguments, std::int64_t time_ms, bool use_lock) = 0;
  /// Writes the header block, after `replacement`, when there is one, was merged into it.
  virtual void WriteHeader(int level, const LogContext& context,
                           const HeaderBlock* replacement) = 0;

  /// Sets the threshold to `level` as the switch files beside the console user's logs change it.
  /// They go by the name of the target's file at this moment.
  void SetLogLevel(int level);

  /// Sets the file to `folder`/`fileName` and tells whether it can be opened; a target whose file
  /// was refused does not open. Without a folder it is the suite's own below the console user's
  /// logs, made and shared when it is missing; without a name the target keeps the one it has. A
  /// name that is more than a bare file name is refused and leaves the path as it was. Both may be
  /// null.
  bool SetLogFile(const char* fileName, const char* folder);

  /// The name that lines are written to it by; the target keeps it for life.
  const std::string& GetName() const { return name_; }

  /// Counts one more user of the target.
  void AddRef();

 protected:
  /// A target at level kLogInfo, without a name and a path.
  LogTargetBase();

  std::string name_;                         ///< see GetName
  std::string separator_ = " | ";            ///< between the fields of a line
  std::string file_name_ = kDefaultLogName;  ///< the last component of the path, and its default
  std::string file_path_;                    ///< empty until SetLogFile or Open chooses one
  int level_ = 0;                            ///< the threshold, as the switch files changed it
  std::fstream stream_;                      ///< open on the file between Open and Close
  bool enabled_ = true;                      ///< false when SetLogFile was refused its file
  bool opened_ = false;                      ///< between a successful Open and Close

 private:
  std::int32_t use_count_ = 0;
  std::mutex use_count_mutex_;
};

}  // namespace welko

#endif  // WELKO_LOG_TARGET_BASE_H_
