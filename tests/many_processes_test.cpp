// Many processes on one preference file, and on one log.

#include <fstream>
#include <iterator>

#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"
#include "tests/log_support.h"
#include "welko/log_file_lock.h"

namespace test {
namespace {

constexpr int kProcesses = 8;

// Runs `body` with the numbers from 0 at the same time, each in a process of its own, and waits.
void RunAll(const std::function<int(int)>& body) {
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(StartChild([&] { return body(process); }));
  }
  for (const pid_t child : children) EXPECT_EQ(WaitFor(child), 0) << "a process has failed";
}

// Whoever has waited for a lock in vain for a second is told so, and tries again.
bool Tries(const std::function<bool()>& use) {
  for (int tries = 0; tries < 30; ++tries) {
    if (use()) return true;
  }
  return false;
}

using ManyProcesses = TreeTest;

TEST_F(ManyProcesses, WriteOnePreferenceFileAndLoseNothing) {
  constexpr int kSets = 400;
  const fs::path prefs = top / "prefs.dat";
  RunAll([&](int process) {
    esd::ResourceLocker locker(prefs, 0);
    esd::PrefsWriter store(prefs, "Prefs");
    store.SetLockPolicy(&locker);
    const std::string key = "Key" + std::to_string(process);
    for (int number = 1; number <= kSets; ++number) {
      int found = 0;
      if (!Tries([&] { return store.SetPref(key, number); }) ||
          !Tries([&] { return store.GetPref(key, found, 0); }) || found != number) {
        return 1;
      }
    }
    return 0;
  });
  Lines lines = ReadLines(prefs), expected;
  std::erase_if(lines, [](const std::string& line) { return !line.starts_with("<Key"); });
  std::sort(lines.begin(), lines.end());
  for (int process = 0; process < kProcesses; ++process) {
    const std::string key = "Key" + std::to_string(process);
    expected.push_back("<" + key + ">" + std::to_string(kSets) + "</" + key + ">");
  }
  EXPECT_EQ(Text(lines), Text(expected));
}

// Rolls over often, though few lines are written: now and then a process gives the log the size at
// which it rolls over, by a hole, and the next line makes a backup of it.
class SharedLog : public TreeTest {
 protected:
  static constexpr int kLines = 2000, kLinesBetweenHoles = 400;  // of one process
  static constexpr int kRollOvers = kProcesses * kLines / kLinesBetweenHoles;
  static constexpr std::uintmax_t kSizeLimit = 10 * 1048576;
  static constexpr int kSecondsBetweenSizeChecks = 900;

  int WriteLines(int process) const {
    welko::LogTargetDefault target("T");
    if (!OpenOn(target, log)) return 1;
    welko::LogFileLock lock(log);
    for (int number = 1; number <= kLines; ++number) {
      // Backups are named by the local time, and those of one second need names of their own: each
      // is made in another time zone, a second from the last.
      const std::string backups = std::to_string(Names(folder).size());
      SetTimeZone("ZONE-0:00:" + std::string(backups.size() < 2 ? "0" : "") + backups);
      // As if so much time had passed that the size is looked at again.
      Write(target, std::to_string(process) + " " + std::to_string(number), 30,
            std::time(nullptr) + number * kSecondsBetweenSizeChecks);
      // The processes take turns.
      if ((number + process * kLinesBetweenHoles / kProcesses) % kLinesBetweenHoles != 0) continue;
      const welko::LogFileLock::Hold hold(&lock);
      if (fs::file_size(log) < kSizeLimit) fs::resize_file(log, kSizeLimit);
    }
    return 0;
  }

  // The lines before and behind the hole, if there is one, less the header.
  Lines LinesOf(const fs::path& path) const {
    std::ifstream file(path, std::ios::binary);
    std::string before, behind;
    std::getline(file, before, '\0');
    file.seekg(kSizeLimit);
    std::getline(file, behind, '\0');
    const fs::path text = top / path.filename();
    WriteFile(text, before + behind);
    return LinesAfterHeader(text);
  }

  // What is in `lines` and not in `others`, both sorted; the first few.
  static std::string Missing(const Lines& others, const Lines& lines) {
    Lines missing;
    std::set_difference(lines.begin(), lines.end(), others.begin(), others.end(),
                        std::back_inserter(missing));
    missing.resize(std::min<std::size_t>(missing.size(), 5));
    return Text(missing);
  }

  const fs::path folder = top / "logs", log = folder / "Some.log";
};

TEST_F(SharedLog, LosesNoLineOverManyRollOvers) {
  WriteFile(folder / "quib.trace", "keeplogs");
  MakeEmptyLog(log);
  RunAll([this](int process) { return WriteLines(process); });
  fs::remove(folder / "quib.trace");

  Lines found, expected;
  for (const std::string& name : Names(folder)) {
    for (std::string& line : LinesOf(folder / name)) found.push_back(std::move(line));
  }
  for (int process = 0; process < kProcesses; ++process) {
    for (int number = 1; number <= kLines; ++number) {
      expected.push_back("TIME | [INFO] | a | b | c | d | e | f | TID | " +
                         std::to_string(process) + " " + std::to_string(number));
    }
  }
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(Missing(found, expected), "") << "the first lines that are lost";
  EXPECT_EQ(Missing(expected, found), "") << "the first lines that nobody has written like this";
  EXPECT_GE(Names(folder).size(), kRollOvers / 2U) << "the log rolled over too seldom";
}

}  // namespace
}  // namespace test
