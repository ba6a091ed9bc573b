#include "platform/posix/machine_code.h"

#include <libkern/OSByteOrder.h>
#include <mach-o/dyld.h>
#include <mach-o/fat.h>
#include <mach-o/loader.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace platform {
namespace {

template <typename Record>
bool ReadAt(std::string_view head, std::size_t at, Record& record) {
  if (head.size() < at + sizeof record) return false;
  std::memcpy(&record, head.data() + at, sizeof record);
  return true;
}

// The processors of a file for several, whose header is big-endian everywhere (mach-o/fat.h). A
// Java class file begins with the same number, and with a version where the count stands.
std::vector<cpu_type_t> FatProcessors(std::string_view head) {
  constexpr std::uint32_t kMost = 30;
  fat_header header{};
  std::vector<cpu_type_t> processors;
  if (!ReadAt(head, 0, header)) return processors;
  const std::uint32_t magic = OSSwapBigToHostInt32(header.magic);
  const std::uint32_t count = OSSwapBigToHostInt32(header.nfat_arch);
  if ((magic != FAT_MAGIC && magic != FAT_MAGIC_64) || count > kMost) return processors;
  const std::size_t size = magic == FAT_MAGIC ? sizeof(fat_arch) : sizeof(fat_arch_64);
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t processor = 0;  // the first field of either record
    if (!ReadAt(head, sizeof header + i * size, processor)) break;
    processors.push_back(static_cast<cpu_type_t>(OSSwapBigToHostInt32(processor)));
  }
  return processors;
}

bool IsFor(ProgramUse use, std::uint32_t file_type) {
  if (use == ProgramUse::kRun) return file_type == MH_EXECUTE;
  return file_type == MH_DYLIB || file_type == MH_BUNDLE;
}

// Those that the file has code of the right type for. What a file for several has for one of them
// lies far behind its head.
std::vector<cpu_type_t> Processors(std::string_view head, ProgramUse use) {
  mach_header header{};
  if (!ReadAt(head, 0, header)) return {};
  // One of the other byte order is for a processor that no such system runs on.
  if (header.magic != MH_MAGIC_64 && header.magic != MH_MAGIC) return FatProcessors(head);
  if (!IsFor(use, header.filetype)) return {};
  return {header.cputype};
}

// Whether this machine is for arm64, where a program for x86_64, such as this one, is translated.
bool IsArm64() {
  int answer = 0;
  std::size_t size = sizeof answer;
  return sysctlbyname("hw.optional.arm64", &answer, &size, nullptr, 0) == 0 && answer == 1;
}

// Whether a new process could have code for that processor, though this one is for another.
bool IsRunBeside(cpu_type_t processor, cpu_type_t own) {
  if (own == CPU_TYPE_X86_64) return processor == CPU_TYPE_ARM64 && IsArm64();
  return processor == CPU_TYPE_X86_64 &&
         access("/Library/Apple/usr/libexec/oah/libRosettaRuntime", F_OK) == 0;
}

}  // namespace

ProgramFit FitOfMachineCode(std::string_view head, ProgramUse use) {
  const std::vector<cpu_type_t> processors = Processors(head, use);
  const cpu_type_t own = _dyld_get_image_header(0)->cputype;
  for (const cpu_type_t processor : processors) {
    if (processor == own) return ProgramFit::kFits;
    if (use == ProgramUse::kRun && IsRunBeside(processor, own)) return ProgramFit::kFits;
  }
  return processors.empty() ? ProgramFit::kNoProgram : ProgramFit::kOtherProcessor;
}

}  // namespace platform
