// The part of copyfile(3) that wakerly calls.
#ifndef TESTS_MACOS_COPYFILE_H_
#define TESTS_MACOS_COPYFILE_H_

typedef struct _copyfile_state* copyfile_state_t;

enum { COPYFILE_ACL = 1 << 0, COPYFILE_XATTR = 1 << 2 };

extern "C" int fcopyfile(int from, int to, copyfile_state_t state, unsigned flags);

#endif  // TESTS_MACOS_COPYFILE_H_
