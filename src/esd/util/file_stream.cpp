#include "esd/util/file_stream.h"

#include <sys/stat.h>

namespace esd {
namespace {

// Opening a FIFO waits for its other end, for ever if there is none.
bool IsSomethingElse(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

template <typename Stream>
std::unique_ptr<Stream> OpenFile(const std::string& path, std::ios::openmode mode) {
  auto stream = std::make_unique<Stream>();
  if (IsSomethingElse(path)) {
    stream->setstate(std::ios::failbit);
  } else {
    stream->open(path, mode);
  }
  return stream;
}

}  // namespace

ESDifstream::ESDifstream(const std::string& path, const char* /*mode*/,
                         std::ios::openmode open_mode)
    : stream_(OpenFile<std::ifstream>(path, open_mode)) {}

ESDifstream::~ESDifstream() = default;

ESDofstream::ESDofstream(const std::string& path, const char* /*mode*/,
                         std::ios::openmode open_mode)
    : stream_(OpenFile<std::ofstream>(path, open_mode)) {}

ESDofstream::~ESDofstream() = default;

}  // namespace esd
