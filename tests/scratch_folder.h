// A temporary folder for tests, fuzz targets and measurements.
#ifndef TESTS_SCRATCH_FOLDER_H_
#define TESTS_SCRATCH_FOLDER_H_

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace test {

/// A new folder below $TMPDIR or /tmp, removed with its content at the end. A process that is
/// killed leaves it behind.
class ScratchFolder {
 public:
  /// Throws std::system_error where the folder cannot be made.
  ScratchFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "wakerly-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), pattern);
    }
    path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace test

#endif  // TESTS_SCRATCH_FOLDER_H_
