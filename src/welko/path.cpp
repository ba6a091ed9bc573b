#include "welko/path.h"

#include "platform/file_type.h"

namespace welko {

void AppendPathComponent(std::string& path, const std::string& component) {
  if (path.empty() || component.empty()) return;
  if (!path.ends_with('/')) path += '/';
  const std::size_t start = component.find_first_not_of('/');
  if (start != std::string::npos) path.append(component, start);
}

bool PathExists(const std::string& path) { return platform::IsFound(platform::TypeOf(path)); }

std::string LastPathComponent(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string WithoutLastPathComponent(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return "";
  return path.substr(0, slash == 0 ? 1 : slash);
}

std::string PathExtension(const std::string& path) {
  const std::string name = LastPathComponent(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? "" : name.substr(dot);
}

std::string WithoutPathExtension(const std::string& path) {
  return path.substr(0, path.size() - PathExtension(path).size());
}

}  // namespace welko
