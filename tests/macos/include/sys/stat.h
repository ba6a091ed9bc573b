// With Darwin's file flags: chflags(2). They take a field of the structure that Linux leaves empty.
#include_next <sys/stat.h>

#define st_mtimespec st_mtim
#define st_flags __pad0
#define UF_IMMUTABLE 0x00000002U
#define SF_IMMUTABLE 0x00020000U

extern "C" int LstatWithFlags(const char* path, struct stat* status);
extern "C" int lchflags(const char* path, unsigned flags);
#define lstat(path, status) LstatWithFlags(path, status)
