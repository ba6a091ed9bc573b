// What the tests share: a tree of one's own, files, child processes, and log lines to compare.
#ifndef TESTS_TEST_SUPPORT_H_
#define TESTS_TEST_SUPPORT_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace test {

namespace fs = std::filesystem;

/// A temporary folder with a home folder and a tree root in it, which the environment names for
/// this test alone. Languages and the switches of the samples are unset. Afterwards the semaphore
/// sets of its log files, all child processes and the folder itself are gone.
class TreeTest : public testing::Test {
 protected:
  TreeTest();
  ~TreeTest() override;

  const fs::path top;
  const fs::path home;
  const fs::path root;
};

std::string ReadFile(const fs::path& path);
std::vector<std::string> ReadLines(const fs::path& path);
/// Writes `text`, making the folders above.
void WriteFile(const fs::path& path, const std::string& text);
/// The names of what stands in `folder`, sorted.
std::vector<std::string> Names(const fs::path& folder);

/// The lines of the log `path` with the time written TIME and the thread id TID where they have the
/// right form; what has another form stays as it is.
std::vector<std::string> ReadLog(const fs::path& path);
/// The lines of a header block on a machine without the suite, messages only.
std::vector<std::string> HeaderMessages();
/// The part behind the last " | " of each line.
std::vector<std::string> Messages(const std::vector<std::string>& lines);

/// Runs `body` in a child process of its own and returns its exit status, or 128 and the signal
/// that ended it.
int InChild(const std::function<int()>& body);
/// The same, not waited for; hand the result to WaitFor.
int StartChild(const std::function<int()>& body);
int WaitFor(int child);

}  // namespace test

#endif  // TESTS_TEST_SUPPORT_H_
