// What the fuzz targets share: the entry that each defines, checks, and their files.
#ifndef FUZZ_FUZZ_H_
#define FUZZ_FUZZ_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "tests/scratch_folder.h"

/// Does one run over `size` bytes of input and returns 0; libFuzzer's name for it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Aborts with the text of `condition` unless it holds.
#define CHECK(condition) \
  ((condition) ? static_cast<void>(0) : fuzz::Fail(__FILE__, __LINE__, #condition))

namespace fuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Takes the first line off `text` and gives it without its newline.
inline std::string_view TakeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(line.size() < text.size() ? line.size() + 1 : line.size());
  return line;
}

inline void WriteFile(const std::string& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

using test::ScratchFolder;

}  // namespace fuzz

#endif  // FUZZ_FUZZ_H_
