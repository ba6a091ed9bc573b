// Runs a fuzz target over the files that are named, and over those in the folders that are named.
#include <cstdio>

#include "fuzz/fuzz.h"

namespace {

int g_runs = 0;

void Run(const std::filesystem::path& path) {
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) Run(entry.path());
    return;
  }
  std::fprintf(stderr, "%s\n", path.c_str());
  const std::string input = fuzz::ReadFile(path);
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  ++g_runs;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) Run(argv[i]);
  return g_runs > 0 ? 0 : 1;
}
