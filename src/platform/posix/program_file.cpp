#include "platform/program_file.h"

#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "platform/file_descriptor.h"
#include "platform/file_type.h"
#include "platform/posix/machine_code.h"

namespace platform {
namespace {

constexpr std::size_t kHeadSize = 4096;

// The path behind "#!" (execve(2)): blanks may stand before it, and an argument after it.
ProgramFit FitOfScript(std::string_view head) {
  std::string_view line = head.substr(2, head.find('\n') - 2);
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  const std::string interpreter(line.substr(0, line.find_first_of(" \t")));
  const bool is_there =
      TypeOf(interpreter) == FileType::kRegular && access(interpreter.c_str(), X_OK) == 0;
  return is_there ? ProgramFit::kFits : ProgramFit::kNoInterpreter;
}

}  // namespace

ProgramFit FitToRun(const std::string& path) {
  const std::optional<std::string> head = ReadFileStart(path, kHeadSize);
  if (!head) return ProgramFit::kUnreadable;
  if (head->starts_with("#!")) return FitOfScript(*head);
  return FitOfMachineCode(*head, ProgramUse::kRun);
}

ProgramFit FitToLoad(const std::string& path) {
  const std::optional<std::string> head = ReadFileStart(path, kHeadSize);
  return head ? FitOfMachineCode(*head, ProgramUse::kLoad) : ProgramFit::kUnreadable;
}

}  // namespace platform
