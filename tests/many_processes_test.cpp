// Many processes on one log.

#include <set>

#include "tests/log_support.h"
#include "welko/log_file_lock.h"

namespace test {
namespace {

using ManyProcesses = LogTest;

// Rolls over often, though few lines are written: now and then a process gives the log the size at
// which it rolls over, by a hole, and the next line makes a backup of it.
TEST_F(ManyProcesses, LoseNoLineOverManyRollOvers) {
  constexpr int kProcesses = 8, kLines = 2000, kLinesBetweenHoles = 400;  // of one process
  constexpr std::uintmax_t kSizeLimit = 10 * 1048576;
  constexpr int kSecondsBetweenSizeChecks = 900;
  WriteFile(folder / "quib.trace", "keeplogs");
  RunAll(kProcesses, [&](int process) {
    // Backups are named by the local time, and those of one second need names of their own.
    SetTimeZone("ZONE-" + std::to_string(process));
    if (!OpenOn(target, log)) return 1;
    welko::LogFileLock lock(log);
    for (int number = 1; number <= kLines; ++number) {
      // As if so much time had passed that the size is looked at again.
      Write(target, std::to_string(process) + " " + std::to_string(number), 30,
            std::time(nullptr) + number * kSecondsBetweenSizeChecks);
      // The processes take turns.
      if ((number + process * kLinesBetweenHoles / kProcesses) % kLinesBetweenHoles != 0) continue;
      const welko::LogFileLock::Hold hold(&lock);
      fs::resize_file(log, std::max(fs::file_size(log), kSizeLimit));
    }
    return 0;
  });
  fs::remove(folder / "quib.trace");

  std::set<std::string> lost;
  for (int process = 0; process < kProcesses; ++process) {
    for (int number = 1; number <= kLines; ++number) {
      lost.insert(std::to_string(process) + " " + std::to_string(number));
    }
  }
  for (const std::string& name : Names(folder)) {
    std::string text = ReadFile(folder / name);
    std::erase(text, '\0');  // the hole
    WriteFile(top / name, text);
    for (const std::string& line : Messages(LinesAfterHeader(ReadLog(top / name)))) {
      ASSERT_EQ(lost.erase(line), 1U) << line << "\nis in " << name << " and was not written so";
    }
  }
  EXPECT_TRUE(lost.empty()) << lost.size() << " lines are lost, such as\n" << *lost.begin();
  EXPECT_GE(Names(folder).size(), 8U) << "the log rolled over too seldom";
}

}  // namespace
}  // namespace test
