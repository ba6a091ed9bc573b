// Darwin's plain C calls, answered by what wakerly has for Linux, which is compiled under a name of
// its own.

#include <CommonCrypto/CommonDigest.h>
#include <copyfile.h>
#include <dirent.h>
#include <libproc.h>
#include <mach-o/dyld.h>
#include <pthread.h>
#include <sys/proc_info.h>
#include <sys/stat.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#define platform linux_platform
#include "platform/file_attributes.h"
#include "platform/md5.h"
#include "platform/thread_id.h"
#include "tests/macos/recording_system.h"

namespace {

std::string ProcessFolder(int id) { return "/proc/" + std::to_string(id); }

}  // namespace

extern "C" {

unsigned char* CC_MD5(const void* bytes, CC_LONG size, unsigned char* digest) {
  const auto found = linux_platform::Md5Digest({static_cast<const char*>(bytes), size});
  std::copy(found.begin(), found.end(), digest);
  return digest;
}

int pthread_threadid_np(void* thread, uint64_t* id) {
  if (thread != nullptr) return ESRCH;
  *id = linux_platform::CurrentThreadId();
  return 0;
}

int fcopyfile(int from, int to, copyfile_state_t state, unsigned flags) {
  if (state != nullptr || flags != (COPYFILE_ACL | COPYFILE_XATTR)) return -1;
  return linux_platform::CopyAclAndAttributes(from, to) ? 0 : -1;
}

int LstatWithFlags(const char* path, struct stat* status) {
  const int result = (lstat)(path, status);
  status->st_flags = linux_platform::IsLocked(path) ? UF_IMMUTABLE : 0;
  return result;
}

int lchflags(const char* path, unsigned flags) {
  const bool unlocks = (flags & (UF_IMMUTABLE | SF_IMMUTABLE)) == 0;
  return unlocks && linux_platform::ClearLocked(path) ? 0 : -1;
}

int proc_listallpids(void* ids, int size) {
  std::vector<pid_t> found;
  DIR* const folder = opendir("/proc");
  while (const dirent* const entry = readdir(folder)) {
    if (const int id = std::atoi(entry->d_name); id > 0) found.push_back(id);
  }
  closedir(folder);
  const std::size_t bytes = found.size() * sizeof(pid_t);
  if (ids != nullptr)
    std::memcpy(ids, found.data(), std::min(bytes, static_cast<std::size_t>(size)));
  return static_cast<int>(found.size());
}

int proc_pidinfo(int id, int flavor, uint64_t argument, void* info, int size) {
  struct stat status {};
  if (flavor != PROC_PIDT_SHORTBSDINFO || argument != 0 || size != sizeof(proc_bsdshortinfo) ||
      stat(ProcessFolder(id).c_str(), &status) != 0) {
    return 0;
  }
  static_cast<proc_bsdshortinfo*>(info)->pbsi_uid = status.st_uid;
  return size;
}

int proc_pidpath(int id, void* path, uint32_t size) {
  return static_cast<int>(
      readlink((ProcessFolder(id) + "/exe").c_str(), static_cast<char*>(path), size - 1));
}

const mach_header* _dyld_get_image_header(uint32_t index) {
  static mach_header header{};
  header.cputype = test::System().own_processor;
  return index == 0 ? &header : nullptr;
}

int sysctlbyname(const char* name, void* value, size_t* size, void*, size_t) {
  if (std::strcmp(name, "hw.optional.arm64") != 0 || *size != sizeof(int)) return -1;
  *static_cast<int*>(value) = test::System().is_arm64 ? 1 : 0;
  return 0;
}

}  // extern "C"
