// An open file by its number, closed when its owner goes.
#ifndef PLATFORM_FILE_DESCRIPTOR_H_
#define PLATFORM_FILE_DESCRIPTOR_H_

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace platform {

/// Owns at most one descriptor.
class FileDescriptor {
 public:
  /// Owns `number` from now on; a negative one, as open(2) gives for a failure, is none.
  explicit FileDescriptor(int number = -1) : number_(number) {}
  ~FileDescriptor() { Close(); }
  /// Takes over what `other` owns.
  ///@{
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ///@}

  /// Whether there is a descriptor.
  explicit operator bool() const { return number_ >= 0; }
  /// The descriptor, which stays this object's; negative for none.
  int number() const { return number_; }
  /// Closes the descriptor, if there is one. A failure is not told; errno stays as it was.
  void Close();

 private:
  int number_;
};

/// Opens the regular file `path` for reading; links are followed. Not open, with errno telling why,
/// when it cannot be opened; errno is EISDIR for a folder, FIFO, socket or device, none of which is
/// opened at all.
FileDescriptor OpenRegularFile(const std::string& path);

/// The content of the regular file `path`, links followed. Nothing, with errno telling why, when it
/// cannot be read; errno is EFBIG when it has more than `limit` bytes.
std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t limit);

/// The first `size` bytes of the regular file `path`, or fewer where it has no more. Nothing, with
/// errno telling why, when it cannot be read.
std::optional<std::string> ReadFileStart(const std::string& path, std::size_t size);

}  // namespace platform

#endif  // PLATFORM_FILE_DESCRIPTOR_H_
