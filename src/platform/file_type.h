// What stands at a path: its type and its size.
#ifndef PLATFORM_FILE_TYPE_H_
#define PLATFORM_FILE_TYPE_H_

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// The types that callers tell apart.
enum class FileType {
  kNone,          ///< there is nothing, or a folder on the way to it is missing
  kUnknown,       ///< the system does not say, for example where a folder may not be searched
  kRegular,       ///< a regular file
  kFolder,        ///< a folder
  kSymbolicLink,  ///< a link; only TypeOfLink answers so
  kOther,         ///< a FIFO, a socket or a device
};

/// The type of what stands at `path`. Links are followed: one that leads nowhere is kNone.
FileType TypeOf(const std::string& path);

/// As TypeOf, but a link at the end of `path` is itself the answer.
FileType TypeOfLink(const std::string& path);

/// The end of a chain of links.
struct LinkEnd {
  std::string path;
  FileType type;  ///< of no link, perhaps of nothing; errno tells why it is kUnknown
};
/// Where the chain of links ends that begins at `path`; nothing where it has no end.
std::optional<LinkEnd> FollowLinks(std::string path);

/// Whether `type` is that of something that was found: neither kNone nor kUnknown.
constexpr bool IsFound(FileType type) {
  return type != FileType::kNone && type != FileType::kUnknown;
}

/// Whether a folder, FIFO, socket or device stands at `path`, links followed. False where nothing
/// is found. Opening a FIFO waits for its other end,
/// without an end if there is none.
bool IsOtherThanFile(const std::string& path);

/// The size in bytes of what stands at `path`, links followed; nothing where nothing is found.
std::optional<std::int64_t> SizeOf(const std::string& path);

}  // namespace platform

#endif  // PLATFORM_FILE_TYPE_H_
