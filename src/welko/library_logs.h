// The logs folder below a home folder.
#ifndef WELKO_LIBRARY_LOGS_H_
#define WELKO_LIBRARY_LOGS_H_

#include <string>

namespace welko {

/// Makes `home`/Library and `home`/Library/Logs, each with mode 0700, where they are missing, and
/// gives the latter in `out`. False, and `out` untouched, when `home` is empty or a folder cannot
/// be made.
bool MakeLibraryLogs(const std::string& home, std::string& out);

/// Gives in `out` the logs folder of the console user, or of the current user where there is none,
/// made when it is missing. False, and `out` untouched, when it cannot be found or made, or when
/// the process may not act as the console user.
bool GetConsoleUserLogsFolder(std::string& out);

}  // namespace welko

#endif  // WELKO_LIBRARY_LOGS_H_
