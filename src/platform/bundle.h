// The program's own place on disk, and property lists.
#ifndef PLATFORM_BUNDLE_H_
#define PLATFORM_BUNDLE_H_

#include <cstddef>
#include <optional>
#include <string>

namespace platform {

/// The path of the running executable; empty when it is not known.
std::string MainExecutablePath();

/// The path of the running program's bundle: the ".app" folder that holds the executable in its
/// Contents/MacOS, or the executable's own folder when there is none.
std::string MainBundlePath();

/// `path` less empty and "." components, with ".." resolved and without a trailing "/".
std::string StandardizePath(const std::string& path);

/// The size in bytes of the largest property list that is read.
inline constexpr std::size_t kPropertyListLimit = std::size_t{1024} * 1024;

/// The string under `key` of the dictionary in the property list `path`, XML or binary.
/// Nothing when the file cannot be read, is no regular file, has more than kPropertyListLimit
/// bytes, is no dictionary, or holds no string under the key.
std::optional<std::string> ReadPropertyListString(const std::string& path, const std::string& key);

}  // namespace platform

#endif  // PLATFORM_BUNDLE_H_
