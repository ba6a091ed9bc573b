// What every measurement needs: a folder of its own, and preference files in it.
#ifndef BENCH_SUPPORT_H_
#define BENCH_SUPPORT_H_

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/scratch_folder.h"

namespace bench {

/// A temporary folder, which the environment names as the home folder and as the root of the
/// machine's folders.
class Scratch : public test::ScratchFolder {
 public:
  Scratch() {
    setenv("HOME", path().c_str(), 1);
    setenv("WAKERLY_ROOT", path().c_str(), 1);
  }

  std::string File(const std::string& name) const { return path() / name; }
};

/// As many as the updater's schema has.
constexpr std::int64_t kSchemaEntries = 42;

/// Makes a preference file with `entries` keys, a quarter of them with a value that needs escaping,
/// and gives its path. The first key is "Key0".
inline std::string MakePrefsFile(const Scratch& scratch, std::int64_t entries) {
  constexpr const char* kValues[] = {"2", "/Users/Shared/Vantre &amp; Co/orlanul.log", "2026-11-21",
                                     "true"};
  const std::string path = scratch.File("prefs");
  std::ofstream file(path);
  file << "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Preferences>\n";
  for (std::int64_t i = 0; i < entries; ++i) {
    file << "<Key" << i << '>' << kValues[i % 4] << "</Key" << i << ">\n";
  }
  file << "</Preferences>";
  return path;
}

}  // namespace bench

#endif  // BENCH_SUPPORT_H_
