// Logs on a machine that refuses something, or whose files and semaphore sets others have laid.

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ipc.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "esd/log/updater_log.h"
#include "tests/log_support.h"
#include "welko/log_backups.h"
#include "welko/log_file_lock.h"

namespace test {
namespace {

constexpr std::int64_t kFirstOfMay2013 = 1367421630;

// Lets the system calls fail with `error` from now on in this process, where their third argument
// is `least` or more.
void Refuse(int error, const std::vector<unsigned>& calls, unsigned least = 0) {
  std::vector<sock_filter> filter = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (const unsigned call : calls) {
    const sock_filter refuse[] = {
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 4),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, least, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error))};
    filter.insert(filter.end(), std::begin(refuse), std::end(refuse));
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  ASSERT_EQ(prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0) << std::strerror(errno);
}

// As a disk on which no file can be larger.
void LimitFileSize(rlim_t size) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = std::min(size, limit.rlim_max);
  setrlimit(RLIMIT_FSIZE, &limit);
}

class LogFault : public LogTest {
 protected:
  LogFault() { fs::permissions(top, fs::perms{0755}); }

  std::string LoggedMessages() const { return Text(Messages(ReadLog(log))); }
  /// What the log's semaphore set says, as in "1 attached, free".
  std::string Lock() const {
    const int set = semget(ftok(log.c_str(), 11), 0, 0);
    return set == -1 ? "no set"
                     : std::to_string(semctl(set, 0, GETVAL)) + " attached, " +
                           (semctl(set, 1, GETVAL) == 0 ? "held" : "free");
  }
  const std::string header = Text(HeaderMessages());
};

// Else a line break in a date or an exception's text could forge a line.
TEST_F(LogFault, UpdatersMessagesStandOnOneRowEach) {
  const struct {
    std::string message, written;
  } rows[] = {{"a date\n11/21/26 forged", R"(a date\n11/21/26 forged)"},
              {"\ttab, return\r\n", R"(\ttab, return\r\n)"},
              {"others: \x01\x0b\x1f\x7f", R"(others: \x01\x0b\x1f\x7f)"},
              {"as they are: \\n ~ \xC3\xA4 \x80\xFF", "as they are: \\n ~ \xC3\xA4 \x80\xFF"},
              {"masked: <user>a\nb</user>", "masked: <user>****</user>"},
              {"eyJ\n.eyJ", "Found access/device token. Log skipped."}};
  std::string expected = header + ">>> Vantre Updater Log Begin >>>\n";
  for (const auto& row : rows) expected += row.written + "\n";
  ExpectInChild([&] {
    esd::InitUpdaterLog(log, 2, "", "", "");
    for (const auto& row : rows) esd::UpdaterLog(2, row.message);
    esd::UpdaterLogValue(2, "la\nbel", "val\nue");
  });
  EXPECT_EQ(LoggedMessages(), expected + "la\\nbel = val\\nue\n");
}

TEST_F(LogFault, LineThatCannotBeWrittenCostsNoOther) {
  const struct {
    const char* name;
    unsigned room;  // on the disk, for the line that is lost
    bool is_emptied, is_null;
    std::string expected;
  } rows[] = {{"a part is written", 8, false, false, header + "before\n05/01/13\nafter\nlast\n"},
              {"nothing is written", 0, false, false, header + "before\nafter\nlast\n"},
              {"emptied by others then", 8, true, false, header + "after\nlast\n"},
              {"no text", 1, false, true, header + "before\n\nafter\nlast\n"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    MakeEmptyLog(log);
    ExpectInChild([&] {
      SetTimeZone("UTC0");
      ASSERT_TRUE(OpenOn(target, log));
      Write(target, "before");
      LimitFileSize(fs::file_size(log) + row.room);
      row.is_null ? target.WriteLine(nullptr) : Write(target, "lost", 30, kFirstOfMay2013);
      LimitFileSize(RLIM_INFINITY);
      if (row.is_emptied) fs::resize_file(log, 0);
      Write(target, "after");
      Write(target, "last");
    });
    EXPECT_EQ(LoggedMessages(), row.expected);
  }
}

TEST_F(LogFault, NewLogIsWrittenThoughItsModeIsRefused) {
  fs::remove(log);
  ExpectInChild([this] {
    ASSERT_NE(std::freopen((top / "stderr").c_str(), "w", stderr), nullptr);
    Refuse(EPERM, {SYS_fchmod, SYS_chmod, SYS_fchmodat});
    ASSERT_TRUE(OpenOn(target, log));
    Write(target, "to the\tletter");
    std::fflush(stderr);
  });
  EXPECT_EQ(LoggedMessages(), header + "to the\tletter\n");
  EXPECT_EQ(ReadFile(top / "stderr"),
            "\n Error Set File permissions. errno = Operation not permitted");
}

TEST_F(LogFault, LineOfAChildProcessHasItsOwnThreadId) {
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "parent");
  const pid_t child = StartChild([&] { return Write(target, "child"), 0; });
  EXPECT_EQ(WaitFor(child), 0);
  const std::string end = " | " + std::to_string(child) + " | child\n";
  EXPECT_TRUE(ReadFile(log).ends_with(end)) << "instead of" << end << ":\n" << ReadFile(log);
}

TEST_F(LogFault, TextStaysWhereTheBackupCannotBeClosed) {
  WriteFile(log, "text");
  ExpectInChild([this] {
    Refuse(EDQUOT, {SYS_close});
    EXPECT_FALSE(welko::MoveLogText(log, folder / "backup"));
  });
  EXPECT_EQ(ReadFile(log), "text");
  EXPECT_EQ(Text(Names(folder)), "own.log\n");
}

// What a link leads to is a user's own, but for root others may have laid it.
TEST_F(LogFault, TextIsMovedOnlyOutOfAFileOfOnesOwn) {
  const fs::path real = top / "real";
  const struct {
    const char* name;
    std::function<void()> lay;
    bool by_root, by_others;
  } rows[] = {{"a file", [&] { WriteFile(log, "text"); }, true, true},
              {"a link", [&] { fs::create_symlink(real, log); }, false, true},
              {"another name", [&] { fs::create_hard_link(real, log); }, false, true},
              {"a FIFO", [&] { mkfifo(log.c_str(), 0666); }, false, false}};
  umask(0);
  for (const uid_t user : {geteuid(), geteuid() == 0 ? 65534 : geteuid()}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(row.name + (" of user " + std::to_string(user)));
      fs::remove_all(folder);
      fs::create_directory(folder);
      WriteFile(real, "text");
      row.lay();
      const bool moves = user == 0 ? row.by_root : row.by_others;
      ExpectInChild([&] {
        ASSERT_EQ(setuid(user), 0);
        EXPECT_EQ(welko::MoveLogText(log, folder / "backup"), moves) << "whether it is moved";
      });
      EXPECT_EQ(ReadFile(log), moves || fs::is_fifo(log) ? "" : "text");
      EXPECT_EQ(ReadFile(folder / "backup"), moves ? "text" : "");
    }
  }
}

TEST_F(LogFault, CleanUpFollowsALinkToTheFolderAndNoneInIt) {
  WriteFile(folder / "own old.log", "");
  WriteFile(folder / "own old/part", "");
  WriteFile(top / "elsewhere/file", "");
  fs::create_symlink(top / "elsewhere", folder / "own link");
  fs::create_symlink(folder, top / "link");
  welko::RemoveOldBackups(top / "link/own.log", kFirstOfMay2013, 2);
  EXPECT_EQ(Text(Names(folder)), "own old\nown.log\n") << "a folder stays when it was not empty";
  EXPECT_EQ(Text(Names(folder / "own old")), "");
  EXPECT_EQ(Text(Names(top / "elsewhere")), "file\n");
}

// A set that is counted up without having been freed would be waited for by everybody.
TEST_F(LogFault, LockIsLeftToOthersWhereItsSetCannotBePrepared) {
  for (const int error : {EACCES, EPERM, E2BIG, EFBIG, ENOMEM, ENOSPC, ERANGE}) {
    SCOPED_TRACE(std::strerror(error));
    RemoveLogLock(log);
    ExpectInChild([&] {
      constexpr unsigned kSeveralOperations = 2;
      Refuse(error, {SYS_semop, SYS_semtimedop}, kSeveralOperations);
      welko::LogFileLock lock(log);
      alarm(kDeadline.count());
      EXPECT_FALSE(welko::LogFileLock::Hold(&lock));
    });
    EXPECT_EQ(Lock(), "0 attached, held") << "as it was made";
    if (HasFailure()) break;  // a row can last as long as a deadline
  }
}

TEST_F(LogFault, SetOfAnotherMakerIsWaitedForBeforeItIsPrepared) {
  const auto attach = [this] {
    const auto start = std::chrono::steady_clock::now();
    const welko::LogFileLock lock(log);
    EXPECT_EQ(Lock(), "1 attached, free");
    return std::chrono::steady_clock::now() - start;
  };
  ASSERT_NE(semget(ftok(log.c_str(), 11), 2, IPC_CREAT | 0666), -1);
  EXPECT_GE(attach(), std::chrono::milliseconds(10)) << "for a maker that has yet to set the value";
  auto shortest = attach();
  for (int turn = 0; turn < 20; ++turn) shortest = std::min(shortest, attach());
  EXPECT_LT(shortest, std::chrono::milliseconds(10)) << "for a set of its own";
}

TEST_F(LogFault, LockIsGivenBackWhereItsSetCannotBeRemoved) {
  const pid_t child = StartChild([this] {
    {
      const welko::LogFileLock lock(log);
      Refuse(EPERM, {SYS_semctl});
    }
    WriteFile(top / "detached", "");
    return pause();
  });
  Eventually("the child to detach", [this] { return fs::exists(top / "detached"); });
  EXPECT_EQ(Lock(), "0 attached, free");
  kill(child, SIGKILL);
  WaitFor(child);
}

}  // namespace
}  // namespace test
