#include "welko/header_block.h"

#include <sys/utsname.h>

#include <algorithm>
#include <optional>

#include "welko/folder_path.h"
#include "welko/interface_language.h"
#include "welko/path.h"

namespace welko {
namespace {

std::optional<std::string> FindSuiteVersion() {
  const std::string suite = DesktopSuitePath();
  std::string version;
  if (!PathExists(suite) || !GetBundleShortVersion(suite, version)) return std::nullopt;
  return version;
}

std::string MachineName() {
  utsname names{};
  return uname(&names) >= 0 ? names.machine : "";
}

}  // namespace

void HeaderBlock::Replace(const HeaderBlock& other) {
  top_line = other.top_line;
  bottom_line = other.bottom_line;
  for (const auto& entry : other.entries) {
    const auto own = std::find_if(entries.begin(), entries.end(),
                                  [&](const auto& e) { return e.first == entry.first; });
    if (own != entries.end()) {
      own->second = entry.second;
    } else {
      entries.push_back(entry);
    }
  }
}

HeaderBlock DescribeSystem(const platform::SystemVersion& version) {
  HeaderBlock block;
  block.top_line = block.bottom_line = std::string(78, '*');
  if (const std::optional<std::string> suite_version = FindSuiteVersion()) {
    block.entries.emplace_back("Lumdesk Version: ", *suite_version);
  }
  block.entries.emplace_back("Bit: ", std::to_string(WordSize(MachineName())));
  std::string language;
  GetUserInterfaceLanguage(language);
  block.entries.emplace_back("OS Locale: ", language);
  const std::string numbers = std::to_string(version.major_number) + "." +
                              std::to_string(version.minor_number) + "." +
                              std::to_string(version.patch_number);
  block.entries.emplace_back("OS Name: ", "Mac OS " + numbers);
  block.entries.emplace_back("OS Version: ", numbers);
  return block;
}

int WordSize(const std::string& machine) { return machine == "i386" ? 32 : 64; }

}  // namespace welko
