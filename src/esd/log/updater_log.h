// The updater's log: levels, texts and the one target behind it. The target decides what a
// line looks like, and it owns the file.
//
// Levels go from 1 to 10, smaller is more important. InitUpdaterLog is called once, before any
// other thread logs; until then, and when it is never called, every line is dropped.
#ifndef ESD_LOG_UPDATER_LOG_H_
#define ESD_LOG_UPDATER_LOG_H_

#include <cstdint>
#include <optional>
#include <string>

namespace esd {

/// The levels that this program writes its lines at.
///@{
inline constexpr int kBannerLevel = 1;   ///< the banner and the version
inline constexpr int kMessageLevel = 2;  ///< ordinary messages
inline constexpr int kStepLevel = 3;     ///< the begin and the end of a step
///@}

/// The message of the banner line, with which each run begins.
inline constexpr char kBannerMessage[] = ">>> Vantre Updater Log Begin >>>";

/// Starts the log at verbosity `level` in the file `logFilePath` with the banner line; the three
/// texts stand in every line. False when `level` is below 1 (then there is no log at all), or when
/// the path names no folder (then the log goes to the target's default file).
bool InitUpdaterLog(const std::string& logFilePath, int level, const std::string& product,
                    const std::string& component, const std::string& subComponent);

/// The path of the file that InitUpdaterLog writes to when it is given `logFilePath`. Nothing when
/// that names no folder and the target's default folder is not found.
std::optional<std::string> UpdaterLogFile(const std::string& logFilePath);

/// The size in bytes at which the log rolls over that InitUpdaterLog starts at verbosity `level`.
std::int64_t UpdaterLogSizeLimit(int level);

/// Whether InitUpdaterLog could open the log's file and, where that is the one it was given, its
/// banner reached it.
bool IsUpdaterLogWritten();

/// Writes `message` when the log's verbosity admits `level`, as do the others. At verbosity 5 to 9
/// and above 10 the target itself drops levels 3 and 4. One message is one row of the file: control
/// characters are written as `\n`, `\r`, `\t`, else as `\x` and two hexadecimal digits.
void UpdaterLog(int level, const std::string& message);
/// Writes `label` = `value`.
void UpdaterLogValue(int level, const std::string& label, const std::string& value);
/// Writes `label` = `number`.
void UpdaterLogInt(int level, const std::string& label, int number);
/// Writes `label` directly followed by `text`, or by "<NULL>" when it is null.
void UpdaterLogNullable(int level, const std::string& label, const char* text);

}  // namespace esd

#endif  // ESD_LOG_UPDATER_LOG_H_
