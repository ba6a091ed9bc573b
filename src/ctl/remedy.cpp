#include "ctl/remedy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "ctl/user_name.h"
#include "esd/util/path.h"
#include "platform/file_type.h"
#include "platform/folders.h"

namespace ctl {
namespace {

// The bits that chmod(1) calls `rights` for the owner.
mode_t OwnerBits(const std::string& rights) {
  mode_t bits = 0;
  for (const char right : rights) bits |= right == 'r' ? S_IRUSR : right == 'w' ? S_IWUSR : S_IXUSR;
  return bits;
}

// What begins a command that removes or renames `path`.
std::string SudoToChange(const std::string& path) {
  const std::string folder = esd::GetParentFolder(path);
  const bool may_change = faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
  return may_change ? "" : Sudo();
}

std::string ChangeForAll(const std::string& path, const std::string& rights) {
  struct stat status {};
  const bool is_own = stat(path.c_str(), &status) == 0 && status.st_uid == geteuid();
  return (is_own ? "" : Sudo()) + "chmod a+" + rights + " " + ShellWord(path);
}

// `path` with each link on its way followed; nothing where it leads nowhere.
std::optional<std::string> Resolve(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             &std::free);
  return resolved ? std::optional<std::string>(resolved.get()) : std::nullopt;
}

}  // namespace

std::string ShellWord(const std::string& text) {
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

std::string Sudo() { return geteuid() == 0 ? "" : "sudo "; }

bool IsInHome(const std::string& path) {
  if (("/" + path + "/").find("/../") != std::string::npos) return false;
  std::string existing = path;
  while (platform::TypeOfLink(existing) == platform::FileType::kNone && !existing.empty()) {
    existing = esd::GetParentFolder(existing);
  }
  const std::optional<std::string> home = Resolve(platform::HomeFolder());
  const std::optional<std::string> place = Resolve(existing);
  return home && place && (*place + "/").starts_with(*home + "/");
}

std::string SetAside(const std::string& path) {
  // A name that began with a log's would be taken for one of its backups.
  return SudoToChange(path) + "mv " + ShellWord(path) + " " +
         ShellWord(esd::JoinPath(esd::GetParentFolder(path), "aside-")) +
         "\"$(date +%Y%m%d%H%M%S)\"-" + ShellWord(esd::GetLastPathComponent(path));
}

std::optional<std::string> GiveToUser(const std::string& path, const std::string& rights) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  const mode_t bits = OwnerBits(rights);
  const std::string chmod = "chmod u+" + rights + " " + ShellWord(path);
  const bool lacks_rights = (status.st_mode & bits) != bits;
  if (status.st_uid == geteuid()) return lacks_rights ? std::optional(chmod) : std::nullopt;
  if (!IsInHome(path)) return std::nullopt;
  const std::string chown =
      Sudo() + "chown " + ShellWord(UserName(geteuid())) + " " + ShellWord(path);
  return lacks_rights ? chown + " && " + chmod : chown;
}

std::string Remove(const std::string& path) { return SudoToChange(path) + "rm " + ShellWord(path); }

std::optional<std::string> OpenWay(const std::string& path) {
  std::string folder = path;
  struct stat status {};
  while (stat(folder.c_str(), &status) != 0 && errno == EACCES) {
    folder = esd::GetParentFolder(folder);
  }
  return folder == path ? std::nullopt : std::optional(ChangeForAll(folder, "x"));
}

std::string GiveToAll(const std::string& path, const std::string& rights) {
  return OpenWay(path).value_or(ChangeForAll(path, rights));
}

}  // namespace ctl
