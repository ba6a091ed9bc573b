// Darwin's plain C calls, answered by what wakerly has for Linux, which is compiled under a name of
// its own.

#include <CommonCrypto/CommonDigest.h>
#include <copyfile.h>
#include <pthread.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#define platform linux_platform
#include "platform/file_attributes.h"
#include "platform/md5.h"
#include "platform/thread_id.h"

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

}  // extern "C"
