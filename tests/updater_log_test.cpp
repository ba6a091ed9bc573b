#include "esd/log/updater_log.h"

#include <map>
#include <regex>

#include "tests/log_support.h"

namespace test {
namespace {

using UpdaterLog = LogTest;

// The messages that `log` has of those below, each with the level that stands in its line.
std::string Written(const fs::path& log) {
  static const std::regex layout(R"(.* \[(\w+)\] .* \| %s%1 = (\d+))");
  std::string written;
  for (const std::string& line : ReadLines(log)) {
    if (std::smatch match; std::regex_match(line, match, layout)) written += match.format("$2 $1 ");
  }
  return written;
}

TEST_F(UpdaterLog, WritesTheLevelsOfItsTable) {
  const std::map<int, std::string> rows = {
      {0, ""},
      {1, "0 INFO 1 INFO "},
      {2, "0 INFO 1 INFO 2 INFO "},
      {3, "0 INFO 1 INFO 2 INFO 3 DEBUG "},
      {4, "0 INFO 1 INFO 2 INFO 3 DEBUG 4 DEBUG "},
      {5, "0 INFO 1 INFO 2 INFO 5 INFO "},
      {9, "0 INFO 1 INFO 2 INFO 5 INFO 6 INFO 7 INFO 8 INFO 9 INFO "},
      {10, "0 INFO 1 INFO 2 INFO 3 DEBUG 4 DEBUG 5 INFO 6 INFO 7 INFO 8 INFO 9 INFO 10 ALL "},
      {11, "0 INFO 1 INFO 2 INFO 5 INFO 6 INFO 7 INFO 8 INFO 9 INFO 11 INFO "}};
  for (const auto& [configured, written] : rows) {
    SCOPED_TRACE("configured level " + std::to_string(configured));
    fs::remove(log);
    ExpectInChild([&, level = configured] {
      EXPECT_EQ(esd::InitUpdaterLog(log, level, "", "", ""), level > 0);
      for (int message = 0; message < 12; ++message) esd::UpdaterLogInt(message, "%s%1", message);
    });
    EXPECT_EQ(Written(log), written);
    EXPECT_EQ(fs::exists(log), configured > 0) << "whether there is a log";
  }
}

TEST_F(UpdaterLog, GoesToTheDefaultFileAndItsSwitchesWhereItsPathNamesNoFolder) {
  WriteFile(user_logs / "Welko.trace", "");
  ExpectInChild([] {
    EXPECT_FALSE(esd::InitUpdaterLog("own.log", 5, "", "", ""));
    esd::UpdaterLog(3, "traced");
  });
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Welko.log"),
            ">>> Vantre Updater Log Begin >>>\ntraced\n");
}

}  // namespace
}  // namespace test
