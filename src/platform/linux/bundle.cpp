#include "platform/bundle.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace platform {

std::string MainExecutablePath() {
  std::error_code ignored;
  return std::filesystem::read_symlink("/proc/self/exe", ignored).string();  // proc(5)
}

std::string MainBundlePath() {
  constexpr std::string_view kInside = ".app/Contents/MacOS";
  std::string folder = std::filesystem::path(MainExecutablePath()).parent_path().string();
  if (!folder.ends_with(kInside)) return folder;
  return folder.substr(0, folder.size() - kInside.size()) + ".app";
}

std::string StandardizePath(const std::string& path) {
  std::string standard = std::filesystem::path(path).lexically_normal().string();
  if (standard.size() > 1 && standard.ends_with('/')) standard.pop_back();
  return standard;
}

}  // namespace platform
