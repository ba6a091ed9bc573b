// What the tests share: a tree of one's own, files, child processes, waiting with a deadline, and
// log lines to compare.
#ifndef TESTS_TEST_SUPPORT_H_
#define TESTS_TEST_SUPPORT_H_

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/scratch_folder.h"

namespace test {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

/// How long a test waits for anything before it fails with a word. Far more than it takes on a busy
/// machine under a sanitizer.
inline constexpr std::chrono::seconds kDeadline{60};

/// A temporary folder with a home folder and a tree root in it, which the environment names for
/// this test alone. Languages are unset, the mask is 022. Afterwards the semaphore sets of its log
/// files, all child processes and the folder itself are gone, and environment, time zone, working
/// folder, file creation mask and effective user are as before. What sets limits, signal handlers
/// or one of the product's singletons belongs into a child process.
class TreeTest : public testing::Test {
 private:
  Lines environment_;
  const fs::path folder_ = fs::current_path();
  const uid_t user_;
  const mode_t mask_;
  const ScratchFolder scratch_;

 protected:
  TreeTest();
  ~TreeTest() override;

  const fs::path& top = scratch_.path();
  const fs::path home = top / "home";
  const fs::path root = top / "root";
};

std::string ReadFile(const fs::path& path);
Lines ReadLines(const fs::path& path);
/// Writes `text`, making the folders above.
void WriteFile(const fs::path& path, const std::string& text);
/// The names of what stands in `folder`, sorted.
Lines Names(const fs::path& folder);
/// What a person would ask `ls` for, such as "mode 0755, owner 0, group 0"; "nothing" where nothing
/// stands. A link is not followed.
std::string Rights(const fs::path& path);
std::string RightsText(mode_t mode, uid_t owner, gid_t group);

/// One line each, for GoogleTest shows the difference of two texts line by line.
std::string Text(const Lines& lines);

/// Makes an empty log, whose lock nobody left behind: a set of semaphores outlives the processes of
/// a test that was killed, and the number of its file is given to others later.
void MakeEmptyLog(const fs::path& log);
/// Removes the semaphore set of the log's lock, if there is one.
void RemoveLogLock(const fs::path& log);
/// Removes what stands at `log` as well.
void RemoveLog(const fs::path& log);
/// The lines of the log `path` with the time written TIME and the thread id TID where they have the
/// right form; what has another form stays as it is.
Lines ReadLog(const fs::path& path);
/// The lines of a header block on a machine without the suite, messages only.
Lines HeaderMessages();
/// What a log holds behind the header block, whose lines are not looked at.
Lines LinesAfterHeader(const Lines& log);
/// The part behind the last " | " of each line.
Lines Messages(const Lines& lines);

/// Waits until `condition` holds. False, with the test failed, when that takes longer than
/// kDeadline: `what` says what was waited for, as in "the log to have a line".
bool Eventually(const std::string& what, const std::function<bool()>& condition);

/// Runs `body` in a child process of its own and returns its exit status, or 128 and the signal
/// that ended it, as SIGABRT where it throws.
int InChild(const std::function<int()>& body);
/// The same, not waited for; hand the result to WaitFor.
pid_t StartChild(const std::function<int()>& body);
/// Ends the child and fails the test when it lasts longer than kDeadline.
int WaitFor(pid_t child);
/// The same for every child process that there is.
void WaitForAllChildren();
/// The child processes of this one, as far as the system tells.
std::vector<pid_t> ChildProcesses();
/// Runs `body` with each number below `count` at the same time, in child processes whose exit
/// statuses must be 0.
void RunAll(int count, const std::function<int(int)>& body);
/// The user and group that root's tests act as where an ordinary user is needed.
inline constexpr uid_t kOrdinaryUser = 65534;
/// Makes a process of root one of kOrdinaryUser, without other groups, for good. For child
/// processes.
void BecomeOrdinaryUser();
/// Runs `body` in a child process of its own; an expectation that fails there fails this test, too.
void ExpectInChild(const std::function<void()>& body);

}  // namespace test

#endif  // TESTS_TEST_SUPPORT_H_
