#include "platform/system_version.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/bundle.h"

namespace platform {

std::optional<SystemVersion> FindSystemVersion() {
  const char* root = secure_getenv("WAKERLY_ROOT");
  const std::string list =
      std::string(root != nullptr ? root : "") + "/System/Library/CoreServices/SystemVersion.plist";
  const std::optional<std::string> text = ReadPropertyListString(list, "ProductVersion");
  if (!text) return std::nullopt;
  // A version such as 11.0 has no third number.
  SystemVersion version;
  const int read = std::sscanf(text->c_str(), "%ld.%ld.%ld", &version.major_number,
                               &version.minor_number, &version.patch_number);
  if (read < 1) return std::nullopt;
  return version;
}

}  // namespace platform
