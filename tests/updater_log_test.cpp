#include "esd/log/updater_log.h"

#include "esd/log/log_target_registry.h"
#include "tests/log_support.h"

namespace {

using test::Lines;
using test::fs::path;

class UpdaterLog : public test::TreeTest {};

TEST_F(UpdaterLog, WritesTheLevelsOfItsTable) {
  // By configured and by message level: the first letter of the level in the line written.
  const std::string expected[] = {"............", "II..........", "III.........", "IIID........",
                                  "IIIDD.......", "III..I......", "III..II.....", "III..III....",
                                  "III..IIII...", "III..IIIII..", "IIIDDIIIIIA.", "III..IIIII.I"};
  for (int configured = 0; configured < 12; ++configured) {
    const path log = top / std::to_string(configured);
    test::InChild([&] {
      esd::InitUpdaterLog(log, configured, "", "", "");
      for (int level = 0; level < 12; ++level)
        esd::UpdaterLog(level, "at " + std::to_string(level));
      return 0;
    });
    EXPECT_EQ(test::fs::exists(log), configured > 0);
    std::string written(12, '.');
    for (const std::string& line : test::ReadLog(log)) {
      unsigned level = 0;
      if (std::sscanf(test::Messages({line})[0].c_str(), "at %u", &level) == 1) {
        written.at(level) = line.at(8);
      }
    }
    EXPECT_EQ(written, expected[configured]) << configured;
  }
}

TEST_F(UpdaterLog, WritesItsTextsWithLabelsAndContext) {
  test::InChild([&] {
    esd::InitUpdaterLog(top / "own.log", 2, "product", "UPDATER", "WAKERLY");
    esd::UpdaterLog(2, "100%s");
    esd::UpdaterLogValue(2, "label", "");
    esd::UpdaterLogInt(2, "50%1", -7);
    esd::UpdaterLogNullable(2, "text: ", "here");
    esd::UpdaterLogNullable(2, "text: ", nullptr);
    return 0;
  });
  const Lines lines = test::LinesAfterHeader(top / "own.log");
  EXPECT_EQ(test::Messages(lines), (Lines{">>> Vantre Updater Log Begin >>>", "100%s",
                                          "label = ", "50%1 = -7", "text: here", "text: <NULL>"}));
  EXPECT_EQ(lines[1], "TIME | [INFO] | product | UPDATER | WAKERLY |  |  |  | TID | 100%s");
}

TEST_F(UpdaterLog, GoesToTheFileOfItsPathOrToTheDefaultOne) {
  const std::pair<std::string, path> rows[] = {{top / "no folder\\b.log", top / "b.log"},
                                               {top / "", top / "Welko.log"},
                                               {"d.log", home / "Library/Logs/Welko.log"},
                                               {"", home / "Library/Logs/Welko.log"}};
  for (const auto& [log_path, written] : rows) {
    const int has_file = test::InChild([&, log = log_path] {
      const bool result = esd::InitUpdaterLog(log, 2, "", "", "");
      esd::UpdaterLog(2, "path " + log);
      return result ? 1 : 0;
    });
    EXPECT_EQ(has_file, written.parent_path() == top ? 1 : 0) << log_path;
    EXPECT_TRUE(test::ReadFile(written).ends_with(" | path " + log_path + "\n")) << log_path;
  }
  EXPECT_EQ(test::Names(top), (Lines{"Welko.log", "b.log", "home", "root"}));
}

struct MarkedTarget : welko::LogTargetDefault {
  MarkedTarget(const char* name, const char* its_mark) : LogTargetDefault(name), mark(its_mark) {}
  void WriteLine(const char* text) override { LogTargetDefault::WriteLine((text + mark).c_str()); }
  const std::string mark;
};

TEST_F(UpdaterLog, RegistryHandsLinesToTheTargetsOfANameInOrderAndOnce) {
  test::WriteFile(top / "own.log", "begin\n");
  MarkedTarget first("N", " 1"), second("N", " 2"), other("M", " 3"), refused("N", " 4");
  for (MarkedTarget* target : {&second, &first, &other, &second}) {
    target->SetLogFile("own.log", top.c_str());
    EXPECT_TRUE(esd::RegisterLogTarget(target));
  }
  refused.SetLogFile("a/b", top.c_str());
  EXPECT_FALSE(esd::RegisterLogTarget(&refused) || esd::RegisterLogTarget(nullptr));
  for (const char* name : {"N", static_cast<const char*>(nullptr), "n"}) {
    esd::WriteToTargets(name, 50, {"", "", "", "", "", "f"}, "text", nullptr, 7);
  }
  const std::string line = "TIME | [ERROR] |  |  |  |  |  | f | TID | text";
  EXPECT_EQ(test::ReadLog(top / "own.log"), (Lines{"begin", line + " 2", line + " 1"}));
}

}  // namespace
