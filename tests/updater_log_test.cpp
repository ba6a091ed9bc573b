#include "esd/log/updater_log.h"

#include <map>
#include <set>

#include "tests/log_support.h"

namespace test {
namespace {

using UpdaterLog = LogTest;

// The level names by message level, of lines that end with "%s%1 = 7" or another level.
std::map<int, std::string> FoundLevels(const fs::path& log) {
  std::map<int, std::string> found;
  for (const std::string& line : ReadLines(log)) {
    int level = 0;
    if (std::sscanf(Messages({line})[0].c_str(), "%%s%%1 = %d", &level) != 1) continue;
    const std::size_t name = line.find('[') + 1;
    found[level] = line.substr(name, line.find(']') - name);
  }
  return found;
}

TEST_F(UpdaterLog, WritesTheLevelsOfItsTable) {
  // The message levels that are written, by the configured level.
  const std::set<int> written[] = {{},
                                   {0, 1},
                                   {0, 1, 2},
                                   {0, 1, 2, 3},
                                   {0, 1, 2, 3, 4},
                                   {0, 1, 2, 5},
                                   {0, 1, 2, 5, 6},
                                   {0, 1, 2, 5, 6, 7},
                                   {0, 1, 2, 5, 6, 7, 8},
                                   {0, 1, 2, 5, 6, 7, 8, 9},
                                   {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10},
                                   {0, 1, 2, 5, 6, 7, 8, 9, 11}};
  const std::string names[] = {"INFO", "INFO", "INFO", "DEBUG", "DEBUG", "INFO",
                               "INFO", "INFO", "INFO", "INFO",  "ALL",   "INFO"};
  for (int configured = 0; configured < 12; ++configured) {
    const fs::path file = folder / std::to_string(configured);
    ExpectInChild([&] {
      EXPECT_EQ(esd::InitUpdaterLog(file, configured, "", "", ""), configured > 0);
      for (int level = 0; level < 12; ++level) esd::UpdaterLogInt(level, "%s%1", level);
    });
    EXPECT_EQ(fs::exists(file), configured > 0) << "a log at configured level " << configured;
    std::map<int, std::string> levels = FoundLevels(file);
    for (int level = 0; level < 12; ++level) {
      const std::string expected = written[configured].contains(level) ? names[level] : "no line";
      const std::string found = levels.contains(level) ? levels[level] : "no line";
      EXPECT_EQ(found, expected) << "configured level " << configured << ", message level "
                                 << level;
    }
  }
}

TEST_F(UpdaterLog, GoesToTheDefaultFileWhereItsPathNamesNoFolder) {
  ExpectInChild([] { EXPECT_FALSE(esd::InitUpdaterLog("own.log", 2, "", "", "")); });
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Welko.log"), ">>> Vantre Updater Log Begin >>>\n");
}

}  // namespace
}  // namespace test
