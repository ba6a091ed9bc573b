// The part of Mach-O's headers that wakerly reads: Mach-O Programming Topics, <mach/machine.h>.
#ifndef MACH_O_LOADER_H_
#define MACH_O_LOADER_H_

#include <stdint.h>

typedef int32_t cpu_type_t;

enum : cpu_type_t { CPU_TYPE_I386 = 7, CPU_TYPE_X86_64 = 0x01000007, CPU_TYPE_ARM64 = 0x0100000C };
enum : uint32_t { MH_MAGIC = 0xFEEDFACE, MH_MAGIC_64 = 0xFEEDFACF };
enum : uint32_t { MH_EXECUTE = 2, MH_DYLIB = 6, MH_BUNDLE = 8 };

struct mach_header {
  uint32_t magic;
  cpu_type_t cputype;
  int32_t cpusubtype;
  uint32_t filetype, ncmds, sizeofcmds, flags;
};

#endif  // MACH_O_LOADER_H_
