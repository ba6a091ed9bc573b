#include "welko/log_target_default.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <optional>

#include "platform/file_descriptor.h"
#include "platform/file_type.h"
#include "platform/standard_error.h"
#include "platform/system_version.h"
#include "platform/thread_id.h"
#include "welko/log_backups.h"
#include "welko/log_level.h"
#include "welko/log_redaction.h"
#include "welko/log_switches.h"
#include "welko/path.h"

namespace welko {
namespace {

constexpr std::int64_t kSecondsBetweenChecks = 900;
constexpr std::size_t kBackupsKept = 2;
constexpr std::size_t kMessageBuffer = 4096;  // with the terminating zero

std::string FormatMessage(const char* format, std::va_list* arguments) {
  if (arguments == nullptr) return format;
  // Another target may get the same arguments.
  std::va_list copy;
  va_copy(copy, *arguments);
  char message[kMessageBuffer] = "";
  std::vsnprintf(message, sizeof message, format, copy);
  va_end(copy);
  return message;
}

// The calling thread's id, which most systems are asked for by a system call. Nothing that is
// destroyed before the last line is written.
const char* ThreadIdText() {
  thread_local char text[sizeof "18446744073709551615"] = "";
  // A child process has a thread of its own id, which begins as a copy of this one.
  [[maybe_unused]] static const int registered =
      pthread_atfork(nullptr, nullptr, [] { text[0] = '\0'; });
  if (text[0] == '\0') {
    std::snprintf(text, sizeof text, "%" PRIu64, platform::CurrentThreadId());
  }
  return text;
}

// Whether what is written to the file next stands on a row that was begun already.
bool EndsWithinARow(const std::string& path) {
  const platform::FileDescriptor file = platform::OpenRegularFile(path);
  const off_t size = lseek(file.number(), 0, SEEK_END);
  char last = '\0';
  return size != 0 && (pread(file.number(), &last, 1, size - 1) != 1 || last != '\n');
}

}  // namespace

std::int64_t RollOverSize(int level) {
  constexpr std::int64_t kMiB = 1048576;
  if (level == kLogTrace) return 50 * kMiB;
  return level == kLogDebug ? 20 * kMiB : 10 * kMiB;
}

LogTargetDefault::LogTargetDefault(const char* name) {
  if (name != nullptr) name_ = name;
  const std::optional<platform::SystemVersion> version = platform::FindSystemVersion();
  // Systems up to 10.5 have no call for the thread's id.
  thread_ids_ = !version || version->major_number > 10 || version->minor_number > 5;
  masked_keys_ = CredentialKeys();
  header_ = DescribeSystem(version.value_or(platform::SystemVersion{}));
}

LogTargetDefault::~LogTargetDefault() { LogTargetDefault::Close(); }

bool LogTargetDefault::OpenStream(std::fstream& stream) {
  if (stream.is_open()) stream.close();
  if (platform::IsOtherThanFile(file_path_)) return false;
  {
    const platform::FileDescriptor made(
        open(file_path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (made && fchmod(made.number(), 0666) != 0) {
      platform::WriteToStandardError(std::string("\n Error Set File permissions. errno = ") +
                                     std::strerror(errno));
    }
  }
  stream.open(file_path_, std::ios::out | std::ios::app);
  return stream.good();
}

bool LogTargetDefault::Open() {
  if (!enabled_) return false;
  if (file_path_.empty()) {
    const std::optional<std::string> path = DefaultLogPath(file_name_);
    if (!path) return false;
    file_path_ = *path;
  }
  if (!OpenStream(stream_)) return false;
  if (!file_lock_) file_lock_ = std::make_unique<LogFileLock>(file_path_);
  last_check_ = last_message_time_ = NowMilliseconds() / 1000;
  if (const LogFileLock::Hold hold(file_lock_.get()); hold) CheckRollOver();
  opened_ = true;
  return true;
}

bool LogTargetDefault::Close() {
  if (stream_.good()) stream_.close();
  file_lock_.reset();
  opened_ = false;
  return true;
}

bool LogTargetDefault::Log(int level, const LogContext& context, const char* format,
                           std::va_list* arguments, std::int64_t time_ms, bool use_lock) {
  if (!enabled_ || level_ > level) return true;
  const LogFileLock::Hold hold(use_lock ? file_lock_.get() : nullptr);
  if (use_lock) {
    if (!hold) return true;
    if (last_message_time_ - last_check_ >= kSecondsBetweenChecks && CheckRollOver()) {
      last_check_ = last_message_time_;
    }
    MendStream();
    // Only now, under the lock, is it certain that nobody else writes the header.
    if (IsFileEmpty()) WriteHeader(kLogInfo, context, nullptr);
  }

  if (time_ms == 0) time_ms = NowMilliseconds();
  last_message_time_ = time_ms / 1000;
  const char* const thread_id = thread_ids_ ? ThreadIdText() : "";
  const std::string line =
      FormatLogLine(time_ms, level, context, thread_id, FormatMessage(format, arguments),
                    separator_, masked_keys_);
  WriteLine(line.c_str());
  return true;
}

void LogTargetDefault::WriteHeader(int level, const LogContext& context,
                                   const HeaderBlock* replacement) {
  if (replacement != nullptr) header_.Replace(*replacement);
  const auto log = [&](const std::string& text) {
    Log(level, context, text.c_str(), nullptr, 0, false);
  };
  log(header_.top_line);
  for (const auto& [label, value] : header_.entries) log(label + value);
  log(header_.bottom_line);
}

void LogTargetDefault::WriteLine(const char* text) {
  MendStream();
  if (text != nullptr) stream_ << text;
  stream_ << std::endl;
  // Else what the stream still holds would follow at a later time.
  if (!stream_.good()) stream_.close();
  if (text == nullptr) stream_.setstate(std::ios::failbit);
}

// Makes the stream good again after a failure, which may have left a part of a line in the file.
void LogTargetDefault::MendStream() {
  if (!opened_ || stream_.good()) return;
  if (OpenStream(stream_) && !IsFileEmpty() && EndsWithinARow(file_path_)) stream_.put('\n');
}

// True when the file can be written afterwards, or did not need rolling over. Call with the lock
// held.
bool LogTargetDefault::CheckRollOver() {
  const bool keeps_old_logs = KeepsOldLogs(WithoutLastPathComponent(file_path_));
  const std::optional<std::int64_t> size = platform::SizeOf(file_path_);
  if (!size) return false;
  if (*size < RollOverSize(level_)) return true;
  stream_.close();
  const std::int64_t now = NowMilliseconds() / 1000;
  MoveLogText(file_path_, BackupPath(file_path_, now));
  const bool reopened = OpenStream(stream_);
  if (!keeps_old_logs) RemoveOldBackups(file_path_, now, kBackupsKept);
  return reopened;
}

bool LogTargetDefault::IsFileEmpty() { return stream_.rdbuf()->pubseekoff(0, std::ios::end) == 0; }

}  // namespace welko
