// The logs folder below a home folder.
#ifndef WELKO_LIBRARY_LOGS_H_
#define WELKO_LIBRARY_LOGS_H_

#include <optional>
#include <string>

namespace welko {

/// Makes `home`/Library and `home`/Library/Logs, each with mode 0700, where they are missing, and
/// gives the path of the latter. Nothing when `home` is empty or a folder cannot be made.
std::optional<std::string> MakeLibraryLogs(const std::string& home);

/// The path of the logs folder of the console user, or of the current user where there is none; the
/// folder is made when it is missing. Nothing when it cannot be found or made, or when the process
/// may not act as the console user.
std::optional<std::string> GetConsoleUserLogsFolder();

}  // namespace welko

#endif  // WELKO_LIBRARY_LOGS_H_
