// Paths of the support library: appending components, extensions, and what stands at a path.
#ifndef WELKO_PATH_H_
#define WELKO_PATH_H_

#include <string>

namespace welko {

/// Appends `component`, less all its leading "/", to `path` with one "/" between them. Does nothing
/// when either is empty.
void AppendPathComponent(std::string& path, const std::string& component);

/// Whether anything, a file or a folder, stands at `path`; symbolic links are followed.
bool PathExists(const std::string& path);

/// What stands after the last "/"; the whole path when there is none.
std::string LastPathComponent(const std::string& path);

/// What stands before the last "/": "/" when that is the first character, empty when there is none.
std::string WithoutLastPathComponent(const std::string& path);

/// The extension of the last component with its ".", or the empty string. A "." that begins a name
/// begins no extension.
std::string PathExtension(const std::string& path);

/// `path` less its extension.
std::string WithoutPathExtension(const std::string& path);

}  // namespace welko

#endif  // WELKO_PATH_H_
