#include "welko/log_switches.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <optional>

#include "platform/file_type.h"
#include "welko/library_logs.h"
#include "welko/log_level.h"
#include "welko/path.h"

namespace welko {
namespace {

constexpr char kTrace[] = ".trace";
constexpr char kDebug[] = ".debug";

bool IsRegularFile(const std::string& path) {
  return platform::TypeOf(path) == platform::FileType::kRegular;
}

}  // namespace

std::optional<std::string> FindLogSwitch(const std::string& log_name) {
  const std::optional<std::string> folder = GetConsoleUserLogsFolder();
  if (!folder) return std::nullopt;
  for (const std::string& name : {WithoutPathExtension(log_name), std::string(kCommonSwitch)}) {
    std::string path = *folder;
    AppendPathComponent(path, name);
    for (const char* extension : {kTrace, kDebug}) {
      if (IsRegularFile(path + extension)) return path + extension;
    }
  }
  return std::nullopt;
}

int ApplyLogSwitches(const std::string& log_name, int level) {
  const std::optional<std::string> found = FindLogSwitch(log_name);
  if (!found) return level;
  return found->ends_with(kTrace) ? kLogTrace : std::min(level, kLogDebug);
}

bool KeepsOldLogs(const std::string& folder) {
  std::string path = folder;
  AppendPathComponent(path, std::string(kCommonSwitch) + ".trace");
  if (!IsRegularFile(path)) return false;  // reading from a pipe could wait without an end
  std::ifstream file(path, std::ios::binary);
  char text[10] = {};
  file.read(text, 9);
  return std::strcmp(text, "keeplogs") == 0;
}

}  // namespace welko
