// Joining and splitting POSIX paths as texts. Nothing here touches the file system.
#ifndef ESD_UTIL_PATH_H_
#define ESD_UTIL_PATH_H_

#include <string>
#include <string_view>

namespace esd {

/// `folder` and `name` with one "/" between them. One leading "/" of `name` is dropped, no more.
std::string JoinPath(std::string_view folder, std::string_view name);

/// What stands before the last "/": "/" when that is the first character, empty when there is none.
std::string GetParentFolder(std::string_view path);

/// What stands after the last "/"; the whole path when there is none.
std::string GetLastPathComponent(std::string_view path);

}  // namespace esd

#endif  // ESD_UTIL_PATH_H_
