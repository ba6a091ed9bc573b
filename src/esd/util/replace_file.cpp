#include "esd/util/replace_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <initializer_list>
#include <limits>
#include <memory>

#include "esd/util/path.h"
#include "platform/file_descriptor.h"
#include "platform/file_type.h"

namespace esd {
namespace {

using platform::FileDescriptor;
using platform::FileStamp;
using platform::FileType;

constexpr std::uint64_t kSecond = 1'000'000'000;
constexpr std::size_t kUniqueDigits = 12;

bool ErrorIsOneOf(std::initializer_list<int> errors) {
  return std::count(errors.begin(), errors.end(), errno) != 0;
}

std::string FolderOf(const std::string& path) {
  const std::string folder = GetParentFolder(path);
  return folder.empty() ? "." : folder;
}

// What the names of new files begin with.
std::string NewFilePrefix(const std::string& path) {
  return "." + GetLastPathComponent(path) + ".new-";
}

// A file beside the one that it is to replace, removed again unless it is renamed.
class NewFile {
 public:
  NewFile(const std::string& beside, mode_t mode) {
    constexpr int kAttempts = 100;  // against a name that is taken
    const std::string start = FolderOf(beside) + "/" + NewFilePrefix(beside);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
      unsigned char random[kUniqueDigits / 2];
      if (getentropy(random, sizeof random) != 0) return;
      path_ = start;
      for (const unsigned byte : random) {
        path_ += "0123456789abcdef"[byte / 16];
        path_ += "0123456789abcdef"[byte % 16];
      }
      file_ = FileDescriptor(
          open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
      if (file_ || errno != EEXIST) return;
    }
  }
  ~NewFile() {
    if (file_) unlink(path_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  explicit operator bool() const { return static_cast<bool>(file_); }
  int number() const { return file_.number(); }
  bool RenameTo(const std::string& path) {
    if (rename(path_.c_str(), path.c_str()) != 0) return false;
    file_.Close();
    return true;
  }

 private:
  std::string path_;
  FileDescriptor file_;
};

bool WriteAll(int file, std::string_view bytes) {
  off_t at = 0;
  while (!bytes.empty()) {
    const ssize_t written = pwrite(file, bytes.data(), bytes.size(), at);
    if (written < 0 && errno != EINTR) return false;
    if (written <= 0) continue;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    at += written;
  }
  return true;
}

void SetTime(int file, std::uint64_t time) {
  const timespec times[] = {
      {0, UTIME_OMIT}, {static_cast<time_t>(time / kSecond), static_cast<long>(time % kSecond)}};
  futimens(file, times);
}

// Two files can be written in one tick of the clock, and the clock can be set back. Some file
// systems keep nothing finer than a second.
std::optional<FileStamp> StampLaterThan(int file, std::uint64_t time) {
  for (const std::uint64_t later : {time + 1, (time / kSecond + 1) * kSecond}) {
    const std::optional<FileStamp> stamp = platform::StampOf(file);
    if (!stamp || stamp->time > time) return stamp;
    SetTime(file, later);
  }
  return platform::StampOf(file);
}

// Some file systems have no such thing to do.
bool Flush(int file) { return fsync(file) == 0 || ErrorIsOneOf({EINVAL, ENOTSUP}); }

// What a file gets when it is written; nothing when that cannot reach the disk.
std::optional<FileStamp> Finish(int file, std::uint64_t later_than) {
  const std::optional<FileStamp> stamp = StampLaterThan(file, later_than);
  return Flush(file) ? stamp : std::nullopt;
}

// Fills an empty file; nothing when it cannot be written whole.
std::optional<FileStamp> Fill(int file, std::string_view bytes, std::uint64_t later_than) {
  return WriteAll(file, bytes) ? Finish(file, later_than) : std::nullopt;
}

// The same for a file that holds something.
std::optional<FileStamp> Refill(int file, std::string_view bytes, std::uint64_t later_than) {
  const bool is_whole =
      WriteAll(file, bytes) && ftruncate(file, static_cast<off_t>(bytes.size())) == 0;
  return is_whole ? Finish(file, later_than) : std::nullopt;
}

// The file that is replaced.
struct Former {
  FileDescriptor file;  // not open where there is none
  struct stat status {};
};

bool CopyRights(const Former& former, int to) {
  const struct stat& wanted = former.status;
  struct stat given {};
  if (fstat(to, &given) != 0) return false;
  const bool is_owned = wanted.st_uid == given.st_uid && wanted.st_gid == given.st_gid;
  // A list of rights comes last: changing the mode would change it.
  return (is_owned || fchown(to, wanted.st_uid, wanted.st_gid) == 0) &&
         fchmod(to, wanted.st_mode & 07777) == 0 &&
         platform::CopyAclAndAttributes(former.file.number(), to);
}

enum class Outcome { kReplaced, kFailed, kImpossible };

Outcome PutNewFile(const std::string& path, const Former& former, std::string_view bytes,
                   std::uint64_t later_than, std::optional<FileStamp>& stamp) {
  NewFile file(path, former.file ? 0600 : 0666);
  if (!file) {
    return ErrorIsOneOf({EACCES, EPERM, ENAMETOOLONG}) ? Outcome::kImpossible : Outcome::kFailed;
  }
  if (former.file && !CopyRights(former, file.number())) {
    return ErrorIsOneOf({ENOSPC, EDQUOT, EFBIG, EMFILE}) ? Outcome::kFailed : Outcome::kImpossible;
  }
  stamp = Fill(file.number(), bytes, later_than);
  if (!stamp) return Outcome::kFailed;
  if (file.RenameTo(path)) return Outcome::kReplaced;
  return ErrorIsOneOf({EACCES, EPERM, EBUSY}) ? Outcome::kImpossible : Outcome::kFailed;
}

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

std::optional<FileStamp> WriteOver(const std::string& path, const Former& former,
                                   std::string_view bytes, std::uint64_t later_than) {
  const std::optional<std::string> former_bytes =
      platform::ReadRegularFile(path, std::numeric_limits<std::size_t>::max());
  // What may not be read has always been replaced all the same.
  if (!former_bytes && !ErrorIsOneOf({EACCES, EPERM})) return std::nullopt;
  const int file = former.file.number();
  const std::optional<FileStamp> stamp = Refill(file, bytes, later_than);
  if (!stamp && former_bytes) {
    Refill(file, *former_bytes, 0);
    SetTime(file, platform::StampOf(former.status).time);
  }
  return stamp;
}

std::optional<FileStamp> WriteNew(const std::string& path, std::string_view bytes,
                                  std::uint64_t later_than) {
  const FileDescriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!file) return std::nullopt;
  const std::optional<FileStamp> stamp = Fill(file.number(), bytes, later_than);
  if (!stamp) unlink(path.c_str());
  return stamp;
}

}  // namespace

std::optional<FileStamp> ReplaceFile(const std::string& given_path, std::string_view bytes,
                                     std::uint64_t later_than) {
  const std::optional<platform::LinkEnd> end = platform::FollowLinks(given_path);
  if (!end) return std::nullopt;
  const auto& [path, type] = *end;
  if (type != FileType::kRegular && type != FileType::kNone) return std::nullopt;
  // Opened first and left as it is, so that a file that may not be written stays in its place.
  Former former{FileDescriptor(open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC))};
  if (!former.file && errno != ENOENT) return std::nullopt;
  if (former.file) {
    if (fstat(former.file.number(), &former.status) != 0) return std::nullopt;
    if (!S_ISREG(former.status.st_mode)) return std::nullopt;
    later_than = std::max(later_than, platform::StampOf(former.status).time);
  }

  std::optional<FileStamp> stamp;
  const bool has_other_links = former.file && former.status.st_nlink > 1;
  switch (has_other_links ? Outcome::kImpossible
                          : PutNewFile(path, former, bytes, later_than, stamp)) {
    case Outcome::kReplaced:
      return stamp;
    case Outcome::kFailed:
      return std::nullopt;
    case Outcome::kImpossible:
      break;
  }
  return former.file ? WriteOver(path, former, bytes, later_than)
                     : WriteNew(path, bytes, later_than);
}

void RemoveLeftovers(const std::string& given_path) {
  const std::optional<platform::LinkEnd> end = platform::FollowLinks(given_path);
  if (!end) return;
  const std::string prefix = NewFilePrefix(end->path);
  const std::unique_ptr<DIR, CloseFolder> folder(opendir(FolderOf(end->path).c_str()));
  while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
    const std::string_view name(entry->d_name);
    const bool is_leftover =
        name.size() == prefix.size() + kUniqueDigits && name.starts_with(prefix) &&
        name.find_first_not_of("0123456789abcdef", prefix.size()) == std::string_view::npos;
    if (is_leftover) unlinkat(dirfd(folder.get()), entry->d_name, 0);
  }
}

}  // namespace esd
