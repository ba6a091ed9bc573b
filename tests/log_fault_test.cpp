// Logs on a machine that refuses something, or whose files and semaphore sets others have laid.

#include <gmock/gmock.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "esd/log/updater_log.h"
#include "tests/log_support.h"
#include "tests/refusals.h"
#include "welko/log_backups.h"
#include "welko/log_file_lock.h"

namespace test {
namespace {

constexpr std::int64_t kFirstOfMay2013 = 1367421630;

class LogFault : public LogTest {
 protected:
  LogFault() { fs::permissions(top, fs::perms{0755}); }

  /// The log's semaphore set, which another program makes.
  int Set() const { return semget(ftok(log.c_str(), 11), 2, IPC_CREAT | 0666); }
  std::string Lock() const {
    return std::to_string(semctl(Set(), 0, GETVAL)) + " attached, " +
           (semctl(Set(), 1, GETVAL) == 0 ? "held" : "free");
  }
};

// Else a line break in a date or an exception's text could forge a line.
TEST_F(LogFault, UpdatersMessageStandsOnOneRow) {
  ExpectInChild([&] {
    esd::InitUpdaterLog(log, 2, "", "", "");
    esd::UpdaterLog(2, "a date\n11/21/26\t\r\x01\x1f\x7f, \\n \xC3\xA4");
  });
  EXPECT_EQ(MessagesAfterHeader(log),
            ">>> Vantre Updater Log Begin >>>\n"
            "a date\\n11/21/26\\t\\r\\x01\\x1f\\x7f, \\n \xC3\xA4\n");
}

TEST_F(LogFault, LineThatCannotBeWrittenCostsNoOther) {
  for (const std::string part : {"", "05/01/13"}) {
    MakeEmptyLog(log);
    ExpectInChild([&] {
      ASSERT_TRUE(OpenOn(target, log));
      Write(target, "before");
      LimitFileSize(fs::file_size(log) + part.size());
      Write(target, "lost", 30, kFirstOfMay2013);
      LimitFileSize(RLIM_INFINITY);
      Write(target, "after");
    });
    EXPECT_EQ(MessagesAfterHeader(log), "before\n" + (part.empty() ? "" : part + "\n") + "after\n");
  }
}

TEST_F(LogFault, NewLogIsWrittenThoughItsModeIsRefused) {
  fs::remove(log);
  ExpectInChild([this] {
    ASSERT_NE(std::freopen((top / "stderr").c_str(), "w", stderr), nullptr);
    Refuse(EPERM, SYS_fchmod);
    ASSERT_TRUE(OpenOn(target, log));
    Write(target, "to the\tletter");
  });
  EXPECT_EQ(MessagesAfterHeader(log), "to the\tletter\n");
  EXPECT_EQ(ReadFile(top / "stderr"),
            "\n Error Set File permissions. errno = Operation not permitted");
}

TEST_F(LogFault, LineOfAChildProcessHasItsOwnThreadId) {
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "parent");
  const pid_t child = StartChild([&] { return Write(target, "child"), 0; });
  WaitFor(child);
  EXPECT_THAT(ReadLines(log).back(), testing::EndsWith(std::to_string(child) + " | child"));
}

TEST_F(LogFault, TextStaysWhereTheBackupCannotBeClosed) {
  WriteFile(log, "text");
  ExpectInChild([this] {
    Refuse(EDQUOT, SYS_close);
    EXPECT_FALSE(welko::MoveLogText(log, folder / "backup"));
  });
  EXPECT_EQ(ReadFile(log), "text");
  EXPECT_EQ(Text(Names(folder)), "own.log\n");
}

// What a link leads to is a user's own, but for root others may have laid it.
TEST_F(LogFault, TextIsMovedThroughLinksByUsersOnly) {
  umask(0);
  const fs::path open = top / "open";
  for (const char* name : {"real", "twice"}) WriteFile(open / name, "text");
  fs::create_symlink("real", open / "symbolic");
  fs::create_hard_link(open / "twice", open / "hard");
  for (const std::string link : {"symbolic", "hard"}) {
    for (const bool ordinary : {false, true}) {
      ExpectInChild([&] {
        if (ordinary) BecomeOrdinaryUser();
        EXPECT_EQ(welko::MoveLogText(open / link, open / (link + (ordinary ? "2" : "1"))),
                  geteuid() != 0)
            << link << " link of user " << geteuid();
      });
    }
  }
}

TEST_F(LogFault, CleanUpFollowsALinkToTheFolder) {
  WriteFile(folder / "own old.log", "");
  fs::create_symlink(folder, top / "link");
  welko::RemoveOldBackups(top / "link/own.log", kFirstOfMay2013, 2);
  EXPECT_EQ(Text(Names(folder)), "own.log\n");
}

// A set that is counted up without having been freed would be waited for by everybody.
TEST_F(LogFault, NewLockIsPreparedUnlessTheSystemRefuses) {
  // The first attempt alone has four operations. It fails with EAGAIN where another has counted
  // itself since the set was made.
  const std::pair<int, const char*> rows[] = {{EAGAIN, "1 attached, free"},
                                              {ENOSPC, "0 attached, held"}};
  for (const auto& [error, state] : rows) {
    RemoveLogLock(log);
    ExpectInChild([&, refusal = error, expected = state] {
      for (const int call : {SYS_semop, SYS_semtimedop}) Refuse(refusal, call, 4);
      const welko::LogFileLock lock(log);
      EXPECT_EQ(Lock(), expected) << "after: " << std::strerror(refusal);
    });
  }
}

TEST_F(LogFault, LockOfAnotherMakerIsWaitedForBeforeItIsPrepared) {
  const auto attach = [this] {
    const auto start = std::chrono::steady_clock::now();
    const welko::LogFileLock lock(log);
    EXPECT_EQ(Lock(), "1 attached, free");
    return std::chrono::steady_clock::now() - start;
  };
  Set();
  EXPECT_GE(attach(), std::chrono::milliseconds(10)) << "for a maker that has yet to set the value";
  auto shortest = attach();
  for (int turn = 0; turn < 20; ++turn) shortest = std::min(shortest, attach());
  EXPECT_LT(shortest, std::chrono::milliseconds(10)) << "for a set of its own";
}

TEST_F(LogFault, LockWorksWhenTheCountOfTheAttachedIsFull) {
  const welko::LogFileLock first(log);
  semctl(Set(), 0, SETVAL, 32767);
  ExpectInChild([this] {
    welko::LogFileLock uncounted(log);
    EXPECT_TRUE(welko::LogFileLock::Hold(&uncounted));
  });
  EXPECT_EQ(Lock(), "32767 attached, free");
}

TEST_F(LogFault, LockIsGivenBackWhereItsSetIsAnotherUsers) {
  Set();
  const std::string left = geteuid() == 0 ? "free" : "held";  // a new set is
  ExpectInChild([&] {
    BecomeOrdinaryUser();
    std::make_unique<welko::LogFileLock>(log).reset();
    EXPECT_EQ(Lock(), "0 attached, " + left);
  });
}

}  // namespace
}  // namespace test
