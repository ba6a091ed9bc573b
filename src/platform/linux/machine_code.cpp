#include "platform/posix/machine_code.h"

#include <elf.h>

#include <cstring>
#include <optional>
#include <string>

#include "platform/file_descriptor.h"

namespace platform {
namespace {

// What elf(5) keeps in the same place for 32 and 64 bits, as long as the byte order is known.
struct ElfStart {
  unsigned char ident[EI_NIDENT];
  Elf32_Half type;
  Elf32_Half machine;
};

std::optional<ElfStart> ReadStart(std::string_view head) {
  ElfStart start{};
  if (head.size() < sizeof start || !head.starts_with(ELFMAG)) return std::nullopt;
  std::memcpy(&start, head.data(), sizeof start);
  return start;
}

// The program's own file tells what this machine is.
std::optional<ElfStart> OwnStart() {
  const std::optional<std::string> own = ReadFileStart("/proc/self/exe", sizeof(ElfStart));
  return own ? ReadStart(*own) : std::nullopt;
}

}  // namespace

ProgramFit FitOfMachineCode(std::string_view head, ProgramUse use) {
  const std::optional<ElfStart> file = ReadStart(head);
  const std::optional<ElfStart> own = OwnStart();
  if (!file) return ProgramFit::kNoProgram;
  if (!own) return ProgramFit::kFits;
  if (file->ident[EI_CLASS] != own->ident[EI_CLASS] ||
      file->ident[EI_DATA] != own->ident[EI_DATA] || file->machine != own->machine) {
    return ProgramFit::kOtherProcessor;
  }
  const bool is_program =
      file->type == ET_DYN || (use == ProgramUse::kRun && file->type == ET_EXEC);
  return is_program ? ProgramFit::kFits : ProgramFit::kNoProgram;
}

}  // namespace platform
