// Many processes on one preference file, and on one log.

#include <gmock/gmock.h>
#include <sys/mman.h>

#include <atomic>
#include <unordered_set>

#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"
#include "tests/log_support.h"
#include "welko/log_file_lock.h"

namespace {

constexpr int kProcesses = 8;

// The children's ids, in the order of their numbers.
std::vector<int> StartAll(const std::function<int(int)>& body) {
  std::vector<int> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(test::StartChild([&] { return body(process); }));
  }
  return children;
}

struct ManyProcesses : test::TreeTest {
  const test::fs::path prefs = top / "prefs.dat", logs = top / "logs", log = logs / "Some.log";
};

TEST_F(ManyProcesses, WriteOnePreferenceFileAndLoseNothing) {
  constexpr int kSets = 1000;
  const auto set = [&](int process) {
    esd::ResourceLocker locker(prefs, 0);
    esd::PrefsWriter store(prefs, "Prefs");
    store.SetLockPolicy(&locker);
    const std::string key = "Key" + std::to_string(process);
    for (int number = 1; number <= kSets; ++number) {
      // Whoever has waited for the lock in vain for a second is told so, and tries again.
      while (!store.SetPref(key, number)) {
      }
      int found = 0;
      while (!store.GetPref(key, found, 0)) {
      }
      if (found != number) return 1;
    }
    return 0;
  };
  for (const int child : StartAll(set)) EXPECT_EQ(test::WaitFor(child), 0);
  std::string expected;
  for (int process = 0; process < kProcesses; ++process) {
    const std::string key = "Key" + std::to_string(process);
    expected += "<" + key + ">" + std::to_string(kSets) + "</" + key + ">\n";
  }
  std::vector<std::string> lines = test::ReadLines(prefs);
  std::sort(lines.begin(), lines.end());
  std::string found;
  for (const std::string& line : lines) found += line.starts_with("<Key") ? line + "\n" : "";
  EXPECT_EQ(found, expected);
}

TEST_F(ManyProcesses, WriteOneLogOverManyRollOversAndLoseNoLine) {
  constexpr int kLines = 10'000, kLinesARollOver = 400;
  constexpr std::uintmax_t kLimit = 10 * 1048576;
  struct Shared {
    std::atomic<int> lines, roll_overs;
  };
  auto* const shared = static_cast<Shared*>(
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  test::WriteFile(logs / "quib.trace", "keeplogs");
  // Fills the log up with zeros to the size at which it rolls over, and takes those of the last
  // time out of the backup.
  const auto pad = [&] {
    for (const std::string& name : test::Names(logs)) {
      if (test::fs::file_size(logs / name) < kLimit) continue;
      if (logs / name == log) return;
      std::string text = test::ReadFile(logs / name);
      std::erase(text, '\0');
      test::WriteFile(logs / name, text);
    }
    test::fs::resize_file(log, kLimit);
    ++shared->roll_overs;
  };
  const auto write = [&](int process) {
    welko::LogTargetDefault target("T");
    if (!test::OpenOn(target, log)) return 1;
    welko::LogFileLock lock(log);
    for (int number = 0; number < kLines; ++number) {
      // Another time zone gives the backups of one second names of their own, and a time of its
      // own makes each line look at the size.
      const int zone = shared->roll_overs;
      test::SetTimeZone("ZONE-" + std::to_string(zone / 3600) + ":" +
                        std::to_string(zone / 60 % 60) + ":" + std::to_string(zone % 60));
      test::Write(target, std::to_string(process) + " " + std::to_string(number), 30,
                  std::time(nullptr) + number * 900);
      if (++shared->lines % kLinesARollOver != 0) continue;
      const welko::LogFileLock::Hold hold(&lock);
      pad();
    }
    return 0;
  };
  const std::vector<int> writers = StartAll(write);
  for (const int writer : writers) EXPECT_EQ(test::WaitFor(writer), 0);

  std::unordered_set<std::string> missing;
  for (int process = 0; process < kProcesses; ++process) {
    const std::string before = " | [INFO] | a | b | c | d | e | f | " +
                               std::to_string(writers[static_cast<std::size_t>(process)]) + " | " +
                               std::to_string(process) + " ";
    for (int number = 0; number < kLines; ++number) missing.insert(before + std::to_string(number));
  }
  test::fs::remove(logs / "quib.trace");
  const std::vector<std::string> names = test::Names(logs);
  const std::vector<std::string> header = test::HeaderMessages();
  constexpr std::size_t kStamp = sizeof "11/21/26 08:41:07:042" - 1;
  for (const std::string& name : names) {
    std::string text = test::ReadFile(logs / name);
    std::erase(text, '\0');
    test::WriteFile(top / "text", text);
    const std::vector<std::string> lines = test::ReadLines(top / "text");
    ASSERT_GE(lines.size(), header.size()) << name;
    EXPECT_EQ(test::Messages({lines.begin(), lines.begin() + 6}), header) << name;
    for (std::size_t line = header.size(); line < lines.size(); ++line) {
      EXPECT_EQ(missing.erase(lines[line].substr(std::min(kStamp, lines[line].size()))), 1U)
          << name << ": " << lines[line];
    }
  }
  EXPECT_EQ(missing.size(), 0U);
  EXPECT_GE(names.size(), 20U);
  std::printf("%d lines in %zu files\n", kProcesses * kLines, names.size());
}

}  // namespace
