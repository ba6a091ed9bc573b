// Owners of one open binary file stream each, for callers that close early and by hand.
#ifndef ESD_UTIL_FILE_STREAM_H_
#define ESD_UTIL_FILE_STREAM_H_

#include <fstream>
#include <memory>
#include <string>

namespace esd {

/// An input file. Whether it opened is asked of the inner stream.
class ESDifstream {
 public:
  /// Opens the file `path`, positioned at its end; a folder, FIFO or device does not open. `mode`
  /// is a C mode such as "rb", kept for the callers' sake and not used.
  ESDifstream(const std::string& path, const char* mode,
              std::ios::openmode open_mode = std::ios::binary | std::ios::ate);
  virtual ~ESDifstream();
  ESDifstream(const ESDifstream&) = delete;
  ESDifstream& operator=(const ESDifstream&) = delete;

  /// The inner stream, owned by this object; null once closed.
  std::ifstream* stream() { return stream_.get(); }
  /// Closes the file and destroys the inner stream.
  void close() { stream_.reset(); }

 private:
  std::unique_ptr<std::ifstream> stream_;
};

/// An output file. Whether it opened, and whether all was written, is asked of the inner stream.
class ESDofstream {
 public:
  /// Creates or truncates the file `path`; a folder, FIFO or device does not open. `mode` is a C
  /// mode such as "wb", kept for the callers' sake and not used.
  ESDofstream(const std::string& path, const char* mode,
              std::ios::openmode open_mode = std::ios::binary);
  virtual ~ESDofstream();
  ESDofstream(const ESDofstream&) = delete;
  ESDofstream& operator=(const ESDofstream&) = delete;

  /// The inner stream, owned by this object; null once closed.
  std::ofstream* stream() { return stream_.get(); }
  /// Closes the file and destroys the inner stream; a failure of the last write is not reported.
  void close() { stream_.reset(); }

 private:
  std::unique_ptr<std::ofstream> stream_;
};

}  // namespace esd

#endif  // ESD_UTIL_FILE_STREAM_H_
