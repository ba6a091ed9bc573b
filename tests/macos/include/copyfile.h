// The part of copyfile(3) that wakerly calls.
#define COPYFILE_ACL 0x1U
#define COPYFILE_XATTR 0x4U

typedef struct _copyfile_state* copyfile_state_t;

extern "C" int fcopyfile(int from, int to, copyfile_state_t state, unsigned flags);
