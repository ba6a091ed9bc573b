// A file for several processors; all of it is big-endian.
#include <stdint.h>

enum : uint32_t { FAT_MAGIC = 0xCAFEBABE, FAT_MAGIC_64 = 0xCAFEBABF };

struct fat_header {
  uint32_t magic, nfat_arch;
};
struct fat_arch {
  int32_t cputype, cpusubtype;
  uint32_t offset, size, align;
};
struct fat_arch_64 {
  int32_t cputype, cpusubtype;
  uint64_t offset, size;
  uint32_t align, reserved;
};
