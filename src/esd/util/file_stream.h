// The owner of one open binary file stream, for callers that close early and by hand.
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

}  // namespace esd

#endif  // ESD_UTIL_FILE_STREAM_H_
