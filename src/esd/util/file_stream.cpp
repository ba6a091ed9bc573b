#include "esd/util/file_stream.h"

#include "platform/file_type.h"

namespace esd {
namespace {

template <typename Stream>
std::unique_ptr<Stream> OpenFile(const std::string& path, std::ios::openmode mode) {
  auto stream = std::make_unique<Stream>();
  if (platform::IsOtherThanFile(path)) {
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
