#include "esd/util/file_stream.h"

namespace esd {

ESDifstream::ESDifstream(const std::string& path, const char* /*mode*/,
                         std::ios::openmode open_mode)
    : stream_(std::make_unique<std::ifstream>(path, open_mode)) {}

ESDifstream::~ESDifstream() = default;

ESDofstream::ESDofstream(const std::string& path, const char* /*mode*/,
                         std::ios::openmode open_mode)
    : stream_(std::make_unique<std::ofstream>(path, open_mode)) {}

ESDofstream::~ESDofstream() = default;

}  // namespace esd
