#include "welko/log_backups.h"

#include <fcntl.h>
#include <fts.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <vector>

#include "platform/file_descriptor.h"
#include "welko/log_line.h"
#include "welko/path.h"

namespace welko {
namespace {

using platform::FileDescriptor;
using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

// Takes over `descriptor`, negative for none.
File MakeFile(int descriptor, const char* mode) {
  File file(descriptor < 0 ? nullptr : fdopen(descriptor, mode), &std::fclose);
  if (!file && descriptor >= 0) close(descriptor);
  return file;
}

// A user's own log may be a link. Root's may have been linked by others to what they may not empty.
File OpenToEmpty(const std::string& path) {
  const bool is_root = geteuid() == 0;
  const int flags = O_RDWR | O_NONBLOCK | O_CLOEXEC | (is_root ? O_NOFOLLOW : 0);
  File file = MakeFile(open(path.c_str(), flags), "rb+");
  struct stat status {};
  if (!file || fstat(fileno(file.get()), &status) != 0) return File(nullptr, &std::fclose);
  const bool is_safe = S_ISREG(status.st_mode) && (!is_root || status.st_nlink == 1);
  return is_safe ? std::move(file) : File(nullptr, &std::fclose);
}

// The name must be free: a backup of the same second, or a link that somebody made there, stays.
File CreateNew(const std::string& path) {
  return MakeFile(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666), "wb");
}

bool CopyContent(std::FILE* from, std::FILE* to) {
  char block[4096];
  std::size_t size = 0;
  while ((size = std::fread(block, 1, sizeof block, from)) > 0) {
    if (std::fwrite(block, 1, size, to) != size) return false;
  }
  return std::ferror(from) == 0;
}

// The entries of `folder`, which may be a link, and of the folders in it, as paths relative to it.
std::vector<std::string> ListTree(std::string folder) {
  std::vector<std::string> entries;
  char* roots[] = {folder.data(), nullptr};
  const std::unique_ptr<FTS, decltype(&fts_close)> walk(
      fts_open(roots, FTS_PHYSICAL | FTS_COMFOLLOW | FTS_NOCHDIR, nullptr), &fts_close);
  while (const FTSENT* item = walk ? fts_read(walk.get()) : nullptr) {
    if (item->fts_level == FTS_ROOTLEVEL || item->fts_info == FTS_DP) continue;
    const std::string path(item->fts_path, item->fts_pathlen);
    entries.push_back(path.substr(path.find_first_not_of('/', folder.size())));
  }
  return entries;
}

constexpr char kTimePattern[] = "dddd-dd-dd dd-dd-dd";  // of BackupPath; d is a digit

// Whether `text` begins like the time in a backup's name. It is no shorter.
bool HasTimePattern(const std::string& text) {
  return std::equal(std::begin(kTimePattern), std::end(kTimePattern) - 1, text.begin(),
                    [](char expected, char found) {
                      return expected == 'd' ? found >= '0' && found <= '9' : found == expected;
                    });
}

FileDescriptor OpenFolder(int parent, const std::string& path, int flags) {
  return FileDescriptor(openat(parent, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
}

// Removes the entry at the relative path `entry` below `top`, with no link on the way followed; a
// folder only if it is empty.
void RemoveBelow(const FileDescriptor& top, const std::string& entry) {
  FileDescriptor parent;
  const auto number = [&] { return parent ? parent.number() : top.number(); };
  std::size_t start = 0;
  for (std::size_t end = 0; (end = entry.find('/', start)) != std::string::npos; start = end + 1) {
    parent = OpenFolder(number(), entry.substr(start, end - start), O_NOFOLLOW);
    if (!parent) return;
  }
  const std::string name = entry.substr(start);
  if (unlinkat(number(), name.c_str(), 0) != 0) unlinkat(number(), name.c_str(), AT_REMOVEDIR);
}

}  // namespace

std::string BackupPath(const std::string& path, std::int64_t seconds) {
  return WithoutPathExtension(path) + " " + FormatLocalTime("%Y-%m-%d %H-%M-%S", seconds) +
         PathExtension(path);
}

std::vector<std::string> FindBackups(const std::string& path) {
  const std::string begin = WithoutPathExtension(LastPathComponent(path)) + " ";
  const std::string end = PathExtension(path);
  const std::string folder = WithoutLastPathComponent(path);
  std::vector<std::string> backups;
  for (const std::string& name : ListTree(folder)) {
    if (name.size() != begin.size() + std::size(kTimePattern) - 1 + end.size()) continue;
    if (!name.starts_with(begin) || !name.ends_with(end)) continue;
    if (!HasTimePattern(name.substr(begin.size()))) continue;
    AppendPathComponent(backups.emplace_back(folder), name);
  }
  std::sort(backups.begin(), backups.end());
  return backups;
}

bool MoveLogText(const std::string& path, const std::string& backup) {
  const File from = OpenToEmpty(path);
  if (!from) return false;
  File to = CreateNew(backup);
  if (!to) return false;
  const bool is_copied = CopyContent(from.get(), to.get());
  // Some file systems tell only then that there was no room.
  const bool is_closed = std::fclose(to.release()) == 0;
  if (is_copied && is_closed && ftruncate(fileno(from.get()), 0) == 0) return true;
  unlink(backup.c_str());
  return false;
}

void RemoveOldBackups(const std::string& path, std::int64_t seconds, std::size_t count) {
  constexpr std::int64_t kDay = 86400;
  const std::string folder = WithoutLastPathComponent(path);
  const std::string own_name = LastPathComponent(path);
  const std::string base = WithoutPathExtension(own_name);
  std::vector<std::string> recent_days;
  for (std::size_t d = 0; d < count; ++d) {
    const std::int64_t day = seconds - static_cast<std::int64_t>(d) * kDay;
    recent_days.push_back(base + " " + FormatLocalTime("%Y-%m-%d", day));
  }
  const auto is_recent = [&](const std::string& entry) {
    return std::any_of(recent_days.begin(), recent_days.end(),
                       [&](const std::string& day) { return entry.starts_with(day); });
  };

  const FileDescriptor top = OpenFolder(AT_FDCWD, folder, 0);
  std::vector<std::string> doomed;
  std::vector<std::string> recent;
  for (const std::string& entry : ListTree(folder)) {
    if (!entry.starts_with(base) || entry == own_name) continue;
    (is_recent(entry) ? recent : doomed).push_back(entry);
  }
  std::sort(recent.begin(), recent.end());
  if (recent.size() > count) {
    doomed.insert(doomed.end(), recent.begin(), recent.end() - static_cast<std::ptrdiff_t>(count));
  }
  for (const std::string& entry : doomed) RemoveBelow(top, entry);
}

}  // namespace welko
