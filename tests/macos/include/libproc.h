// The part of libproc that wakerly calls.
#include <stdint.h>

#define PROC_PIDPATHINFO_MAXSIZE 4096

extern "C" int proc_listallpids(void* ids, int size);
extern "C" int proc_pidinfo(int id, int flavor, uint64_t argument, void* info, int size);
extern "C" int proc_pidpath(int id, void* path, uint32_t size);
