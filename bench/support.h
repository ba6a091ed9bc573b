// What every measurement needs: a folder of its own, and preference files in it.
#ifndef BENCH_SUPPORT_H_
#define BENCH_SUPPORT_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace bench {

/// A new folder below $TMPDIR or /tmp, removed with its content at the end. The environment names
/// it as the home folder and as the root of the machine's folders.
class Scratch {
 public:
  Scratch() {
    std::string pattern = std::filesystem::temp_directory_path() / "wakerly-bench-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
      std::perror(pattern.c_str());
      std::exit(1);
    }
    path_ = pattern;
    setenv("HOME", path_.c_str(), 1);
    setenv("WAKERLY_ROOT", path_.c_str(), 1);
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::string File(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
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
