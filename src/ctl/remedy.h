// Remedies: commands for a POSIX shell, for somebody to paste. None is run here.
#ifndef CTL_REMEDY_H_
#define CTL_REMEDY_H_

#include <sys/types.h>

#include <optional>
#include <string>

namespace ctl {

/// What removes the lock of a preference file that was left behind.
inline constexpr char kClearLock[] = "wakerlyctl lock --clear";

/// `text` as one word of the shell.
std::string ShellWord(const std::string& text);

/// "sudo ", or nothing for root: what begins a command that is an administrator's.
std::string Sudo();

/// Removes the file `path`.
std::string Remove(const std::string& path);

/// Whether `path`, or what is there of it, is the home folder or below it, with each link on its
/// way followed. What is elsewhere is no user's to change only because a preference, an agent or a
/// link names it: there may be no command for it.
bool IsInHome(const std::string& path);

/// Renames what stands at `path` to a name that is free.
std::string SetAside(const std::string& path);

/// Makes `path` this user's own, with the rights `rights` of chmod(1), such as "rw". Nothing where
/// it is missing, has both already, or is another user's and not in the home folder.
std::optional<std::string> GiveToUser(const std::string& path, const std::string& rights);

/// Lets everybody search the first folder on the way to `path`, which is the machine's, that this
/// user may not search. Nothing where none closes the way.
std::optional<std::string> OpenWay(const std::string& path);

/// Gives everybody the rights `rights` on `path`, which is the machine's, or opens the way to it.
std::string GiveToAll(const std::string& path, const std::string& rights);

}  // namespace ctl

#endif  // CTL_REMEDY_H_
