// The part of dyld(3) that wakerly calls.
#include <mach-o/loader.h>

extern "C" const mach_header* _dyld_get_image_header(uint32_t index);
