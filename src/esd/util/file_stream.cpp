#include "esd/util/file_stream.h"

#include "platform/file_type.h"

namespace esd {

ESDifstream::ESDifstream(const std::string& path, const char* /*mode*/,
                         std::ios::openmode open_mode)
    : stream_(std::make_unique<std::ifstream>()) {
  if (platform::IsOtherThanFile(path)) {
    stream_->setstate(std::ios::failbit);
  } else {
    stream_->open(path, open_mode);
  }
}

ESDifstream::~ESDifstream() = default;

}  // namespace esd
