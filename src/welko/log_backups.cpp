#include "welko/log_backups.h"

#include <fcntl.h>
#include <fts.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "welko/log_line.h"
#include "welko/path.h"

namespace welko {
namespace {

using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

// The name must be free: a backup of the same second, or a link that somebody made there, stays.
File CreateNew(const std::string& path) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  File file(descriptor < 0 ? nullptr : fdopen(descriptor, "wb"), &std::fclose);
  if (!file && descriptor >= 0) close(descriptor);
  return file;
}

bool CopyContent(std::FILE* from, std::FILE* to) {
  char block[4096];
  std::size_t size = 0;
  while ((size = std::fread(block, 1, sizeof block, from)) > 0) {
    if (std::fwrite(block, 1, size, to) != size) return false;
  }
  return std::ferror(from) == 0 && std::fflush(to) == 0;
}

// The entries of `folder` and of the folders in it, as paths relative to it.
std::vector<std::string> ListTree(std::string folder) {
  std::vector<std::string> entries;
  char* roots[] = {folder.data(), nullptr};
  const std::unique_ptr<FTS, decltype(&fts_close)> walk(
      fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, nullptr), &fts_close);
  while (const FTSENT* item = walk ? fts_read(walk.get()) : nullptr) {
    if (item->fts_level == FTS_ROOTLEVEL || item->fts_info == FTS_DP) continue;
    const std::string path(item->fts_path, item->fts_pathlen);
    entries.push_back(path.substr(path.find_first_not_of('/', folder.size())));
  }
  return entries;
}

}  // namespace

std::string BackupPath(const std::string& path, std::int64_t seconds) {
  return WithoutPathExtension(path) + " " + FormatLocalTime("%Y-%m-%d %H-%M-%S", seconds) +
         PathExtension(path);
}

bool MoveLogText(const std::string& path, const std::string& backup) {
  const File from(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!from) return false;
  const File to = CreateNew(backup);
  if (!to) return false;
  if (CopyContent(from.get(), to.get()) && truncate(path.c_str(), 0) == 0) return true;
  std::remove(backup.c_str());
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
  for (const std::string& entry : doomed) {
    std::string doomed_path = folder;
    AppendPathComponent(doomed_path, entry);
    std::remove(doomed_path.c_str());
  }
}

}  // namespace welko
