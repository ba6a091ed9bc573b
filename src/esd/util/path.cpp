#include "esd/util/path.h"

namespace esd {

std::string JoinPath(std::string_view folder, std::string_view name) {
  if (name.starts_with('/')) name.remove_prefix(1);
  std::string path(folder);
  if (!folder.ends_with('/')) path += '/';
  return path.append(name);
}

std::string GetParentFolder(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return "";
  return std::string(path.substr(0, slash == 0 ? 1 : slash));
}

std::string GetLastPathComponent(std::string_view path) {
  return std::string(path.substr(path.rfind('/') + 1));
}

}  // namespace esd
