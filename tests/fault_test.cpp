// Runs on a machine that refuses something: what is said, what is left behind, what is left alone.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "esd/prefs/resource_locker.h"
#include "tests/run_support.h"

namespace test {
namespace {

// One more than the standard streams; the address sanitizer needs some for itself.
#ifdef __SANITIZE_ADDRESS__
constexpr rlim_t kDescriptors = 16;
#else
constexpr rlim_t kDescriptors = 4;
#endif

const std::string kPrefs = PrefsText({{"SomebodyElses", "1"}});

// Lets the system calls fail with `error` from now on, in whatever is executed, too; openat only
// when its flags have one of `open_flags`.
void Refuse(unsigned error, const std::vector<unsigned>& calls, unsigned open_flags = ~0U) {
  constexpr unsigned kFlags = offsetof(seccomp_data, args[2]);
  const sock_filter fail = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error);
  std::vector<sock_filter> filter = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  // openat comes last, for its flags then stand where the number stood.
  for (const unsigned call : calls) {
    const bool looks_at_flags = call == SYS_openat;
    const unsigned char skipped = looks_at_flags ? 3 : 1;
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, skipped));
    if (looks_at_flags) {
      filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kFlags));
      filter.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, open_flags, 0, 1));
    }
    filter.push_back(fail);
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

void Limit(decltype(RLIMIT_NOFILE) resource, rlim_t limit) {
  signal(SIGXFSZ, SIG_IGN);
  const rlimit both = {limit, limit};
  setrlimit(resource, &both);
}

struct Fault {
  const char* name;
  std::function<void()> prepare;
  bool writes_log;
  bool writes_prefs;
};

const Fault kFaults[] = {
    {"FullDisk", [] { Limit(RLIMIT_FSIZE, 0); }, false, false},
    {"AlmostFullDisk", [] { Limit(RLIMIT_FSIZE, kPrefs.size() + 40); }, true, false},
    {"ReadOnly",
     [] {
       Refuse(EROFS, {SYS_mkdir, SYS_openat}, O_WRONLY | O_RDWR | O_CREAT);
     },
     false, false},
    {"FewDescriptors",
     [] {
       closefrom(3);
       Limit(RLIMIT_NOFILE, kDescriptors);
     },
     true, false},
    {"NoLogSemaphores", [] { Refuse(ENOSPC, {SYS_semget}); }, false, true},
    {"NoPrefsSemaphores", [] { Refuse(ENOSPC, {SYS_openat}, O_EXCL); }, false, false},
    {"NoProcesses",
     [] {
       Refuse(EAGAIN, {SYS_clone, SYS_clone3, SYS_vfork, SYS_fork});
     },
     true, true},
};

// GoogleTest would print the bytes.
void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

class FaultTest : public RunTest, public testing::WithParamInterface<Fault> {
 protected:
  FaultTest() {
    InstallNotifier();
    InstallLibrary();
    Run();  // makes every folder
    WriteFile(log, "");
    WriteFile(prefs, kPrefs);
  }

  // The paths in the tree and the texts of its files, less what a run writes.
  std::string Tree() const {
    Lines tree;
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
      const fs::path& path = entry.path();
      if (path == prefs || path == log || path == library_trace || path == notifier_trace) continue;
      tree.push_back(path.string() + (entry.is_regular_file() ? "\n" + ReadFile(path) : ""));
    }
    std::sort(tree.begin(), tree.end());
    return Text(tree);
  }
};

TEST_P(FaultTest, EndsWellWritesWhatItCanAndTouchesNothingElse) {
  const std::string before = Tree();
  // The search for leaks cannot run where so much is refused.
  const Outcome outcome =
      Run({"-mode=scheduled"}, {{"LSAN_OPTIONS", "detect_leaks=0"}}, GetParam().prepare);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(!outcome.log.empty(), GetParam().writes_log) << "the log: " << Text(outcome.log);
  const std::string found = ReadFile(prefs);
  EXPECT_EQ(found != kPrefs, GetParam().writes_prefs) << "the preferences: " << found;
  EXPECT_THAT(found, testing::HasSubstr("<SomebodyElses>1</SomebodyElses>"));
  EXPECT_EQ(Tree(), before) << "something else in the tree has changed";
  EXPECT_FALSE(esd::ResourceLocker(prefs, 0).Unlock(true)) << "the semaphore was left behind";
}

INSTANTIATE_TEST_SUITE_P(Table, FaultTest, testing::ValuesIn(kFaults),
                         [](const auto& test) { return test.param.name; });

TEST_F(RunTest, KeepsToTheRightsThatItHas) {
  fs::create_directories(support);
  WriteFile(prefs, kPrefs);
  WriteFile(log, "old\n");
  const auto obey = [] {
    for (const int right : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) prctl(PR_CAPBSET_DROP, right);
  };
  for (const bool readable : {true, false}) {
    SCOPED_TRACE(readable ? "files that it may only read" : "files that it may not even read");
    const fs::perms mode = readable ? fs::perms::owner_read : fs::perms::none;
    for (const fs::path& path : {prefs, log}) fs::permissions(path, mode);
    fs::permissions(prefs_folder, fs::perms(0500));
    EXPECT_EQ(WaitFor(Start({"-mode=scheduled"}, {}, obey)), 0);
    for (const fs::path& path : {prefs_folder, prefs, log}) fs::permissions(path, fs::perms(0700));
    EXPECT_EQ(ReadFile(prefs), kPrefs);
    EXPECT_EQ(ReadFile(log), "old\n");
  }
}

TEST_F(RunTest, GoesOnWhenItsFolderIsTakenAwayMeanwhile) {
  InstallNotifier();
  InstallLibrary();
  const pid_t run =
      Start({}, {{"KDUPDATER_CALLBACK", "thread"}, {"KDUPDATER_CALLBACK_DELAY_MS", "200"}});
  Eventually("the run to wait for the library", [this] {
    return ReadFile(log).find("inside waitForCFUCallBack.") != std::string::npos;
  });
  fs::rename(prefs_folder, top / "taken");
  EXPECT_EQ(WaitFor(run), 0);
  EXPECT_FALSE(fs::exists(prefs_folder));
  EXPECT_THAT(ReadFile(top / "taken/orlanul.log"), testing::HasSubstr("unloaded kodo library"));
}

// What may stand where a file belongs.
struct Foreign {
  const char* name;
  void (*put)(const fs::path& path, const fs::path& target);
  bool is_link = false;
};

const Foreign kForeign[] = {
    {"Folder", [](const fs::path& path, const fs::path&) { fs::create_directory(path); }},
    {"Fifo", [](const fs::path& path, const fs::path&) { mkfifo(path.c_str(), 0666); }},
    {"Device",
     [](const fs::path& path, const fs::path&) { fs::create_symlink("/dev/null", path); }},
    {"Link", [](const fs::path& path, const fs::path& target) { fs::create_symlink(target, path); },
     true},
    {"DanglingLink",
     [](const fs::path& path, const fs::path& target) {
       fs::remove(target);
       fs::create_symlink(target, path);
     },
     true},
};

void PrintTo(const Foreign& foreign, std::ostream* out) { *out << foreign.name; }

class ForeignObjectTest : public RunTest, public testing::WithParamInterface<Foreign> {
 protected:
  ForeignObjectTest() {
    fs::create_directories(support);
    fs::create_directories(prefs_folder);
    WriteFile(target, kPrefs);
  }

  // A run with the object at `path`, which stays what it is.
  void RunWith(const fs::path& path) const {
    fs::remove(path);
    GetParam().put(path, target);
    const fs::file_type before = fs::symlink_status(path).type();
    EXPECT_EQ(Run({"-mode=scheduled"}).status, 0);
    EXPECT_EQ(fs::symlink_status(path).type(), before) << "the object became another";
  }

  const fs::path target = top / "Some target";
};

TEST_P(ForeignObjectTest, StaysWhereThePreferencesBelong) {
  RunWith(prefs);
  EXPECT_NE(Text(ReadLog(log)), "");
}

TEST_P(ForeignObjectTest, HoldsThePreferencesOnlyWhenItLeadsToAFile) {
  RunWith(prefs);
  const bool are_written = ReadFile(prefs).find("<LogLevel>") != std::string::npos;
  EXPECT_EQ(are_written, GetParam().is_link) << "the preferences hold: " << ReadFile(prefs);
}

TEST_P(ForeignObjectTest, StaysWhereTheLogBelongs) {
  RunWith(log);
  EXPECT_THAT(ReadFile(prefs), testing::HasSubstr("<LogLevel>"));
}

INSTANTIATE_TEST_SUITE_P(Table, ForeignObjectTest, testing::ValuesIn(kForeign),
                         [](const auto& test) { return test.param.name; });

// What a link leads to keeps what it held, and gets more.
TEST_F(RunTest, WritesBehindLinksWithoutLosingWhatIsThere) {
  fs::create_directories(support);
  WriteFile(top / "prefs", kPrefs);
  WriteFile(top / "log", "old\n");
  fs::create_directories(prefs_folder);
  fs::remove(log);
  fs::create_symlink(top / "prefs", prefs);
  fs::create_symlink(top / "log", log);
  EXPECT_EQ(Run({"-mode=scheduled"}).status, 0);
  EXPECT_THAT(ReadFile(top / "prefs"), testing::HasSubstr("<SomebodyElses>1</SomebodyElses>"));
  EXPECT_THAT(ReadFile(top / "log"), testing::StartsWith("old\n"));
  EXPECT_THAT(ReadFile(top / "log"), testing::HasSubstr("Wakerly"));
}

}  // namespace
}  // namespace test
