// With the call of Darwin's threads that Linux lacks; a thread is a pointer there.
#include_next <pthread.h>
#include <stdint.h>

extern "C" int pthread_threadid_np(void* thread, uint64_t* id);
