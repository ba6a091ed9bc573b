// Stamps of an uninstallation, and what they cost.

#include <sys/stat.h>

#include "esd/prefs/updater_prefs.h"
#include "tests/run_support.h"

namespace test {
namespace {

struct StampTest : RunTest {
  // The stamp that the preferences have once they are loaded.
  std::string KnownStamp() const {
    const fs::path known = top / "known";
    ExpectInChild([&] {
      std::string text;
      esd::VantreUpdaterPrefs::GetInstance(false).GetuninstalltsPref().Get(text);
      WriteFile(known, text);
    });
    return ReadFile(known);
  }
  const fs::path stamp = inventory / "uninstallts";
};

TEST_F(StampTest, IsAFirstWordThatEndsWithin4096Bytes) {
  const std::string longest(4096, 'w'), blanks(4096, ' ');
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"a word before others", " \n2026-11-20 by hand\n", "2026-11-20"},
      {"4096 bytes", longest, longest},
      {"4096 bytes and more words", longest + "\nmore", longest},
      {"4097 bytes", longest + "w", "former"},
      {"a word behind 4096 blanks", blanks + "late", "former"},
      {"blanks alone", " \n", "former"}};
  for (const auto& [name, content, known] : rows) {
    WriteFile(prefs, PrefsText({{"uninstallts", "former"}}));
    WriteFile(stamp, content);
    EXPECT_EQ(KnownStamp(), known) << name;
  }
  fs::remove(stamp);
  ASSERT_EQ(mkfifo(stamp.c_str(), 0666), 0);
  EXPECT_EQ(KnownStamp(), "former") << "a FIFO";
}

TEST_F(StampTest, ANewOneRemovesNoFolderWhereThePreferencesBelong) {
  WriteFile(prefs / "Some file", "Some text");
  WriteFile(stamp, "new");
  KnownStamp();
  EXPECT_EQ(ReadFile(prefs / "Some file"), "Some text") << "in " << prefs;
}

}  // namespace
}  // namespace test
