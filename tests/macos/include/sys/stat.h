// With Darwin's file flags: chflags(2). They take a field of the structure that Linux leaves empty.
#ifndef TESTS_MACOS_SYS_STAT_H_
#define TESTS_MACOS_SYS_STAT_H_

#include_next <sys/stat.h>

#define st_mtimespec st_mtim
#define st_flags __pad0

enum { UF_IMMUTABLE = 0x00000002, SF_IMMUTABLE = 0x00020000 };

extern "C" int LstatWithFlags(const char* path, struct stat* status);
extern "C" int lchflags(const char* path, unsigned flags);
#define lstat(path, status) LstatWithFlags(path, status)

#endif  // TESTS_MACOS_SYS_STAT_H_
