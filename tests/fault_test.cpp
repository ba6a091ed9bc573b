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
void Refuse(int error, const std::vector<unsigned>& calls, unsigned open_flags = ~0U) {
  std::vector<sock_filter> filter = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (const unsigned call : calls) {
    if (call == SYS_openat) continue;
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)));
  }
  if (std::find(calls.begin(), calls.end(), SYS_openat) != calls.end()) {
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3));
    filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])));
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, open_flags, 0, 1));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)));
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
  bool logs;   // whether the run writes its log
  bool keeps;  // whether the preferences stay as they are
};

// GoogleTest would print the bytes.
void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

class FaultTest : public RunTest, public testing::WithParamInterface<Fault> {
 protected:
  FaultTest() {
    InstallNotifier();
    InstallLibrary();
  }

  // What stands in the tree, less what a run writes.
  std::vector<std::string> Tree() const {
    std::vector<std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
      const fs::path& path = entry.path();
      if (path == log || path == library_trace || path == notifier_trace) continue;
      tree.push_back(path.string() + (entry.is_regular_file() ? ReadFile(path) : ""));
    }
    std::sort(tree.begin(), tree.end());
    return tree;
  }
};

TEST_P(FaultTest, EndsWellAndTouchesNothingElse) {
  // Every folder that a run makes is there.
  Run();
  WriteFile(log, "");
  WriteFile(prefs, kPrefs);
  fs::remove(library_trace);
  fs::remove(notifier_trace);
  const auto before = Tree();
  // The search for leaks cannot run where so much is refused.
  const Outcome outcome =
      Run({"-mode=scheduled"}, {{"LSAN_OPTIONS", "detect_leaks=0"}}, GetParam().prepare);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(!outcome.log.empty(), GetParam().logs);
  EXPECT_EQ(ReadFile(prefs) == kPrefs, GetParam().keeps) << ReadFile(prefs);
  WriteFile(prefs, kPrefs);
  EXPECT_EQ(Tree(), before);
  EXPECT_FALSE(esd::ResourceLocker(prefs, 0).Unlock(true));
}

INSTANTIATE_TEST_SUITE_P(
    Table, FaultTest,
    testing::Values(
        Fault{"FullDisk", [] { Limit(RLIMIT_FSIZE, 0); }, false, true},
        Fault{"AlmostFullDisk", [] { Limit(RLIMIT_FSIZE, kPrefs.size() + 40); }, true, true},
        Fault{"ReadOnly",
              [] {
                Refuse(EROFS, {SYS_openat, SYS_mkdir}, O_WRONLY | O_RDWR | O_CREAT);
              },
              false, true},
        Fault{"FewDescriptors",
              [] {
                closefrom(3);
                Limit(RLIMIT_NOFILE, kDescriptors);
              },
              true, true},
        Fault{"NoLogSemaphores", [] { Refuse(ENOSPC, {SYS_semget}); }, false, false},
        Fault{"NoPrefsSemaphores", [] { Refuse(ENOSPC, {SYS_openat}, O_EXCL); }, false, true},
        Fault{"NoProcesses",
              [] {
                Refuse(EAGAIN, {SYS_clone, SYS_clone3, SYS_vfork, SYS_fork});
              },
              true, false}),
    [](const auto& test) { return test.param.name; });

TEST_F(RunTest, KeepsToTheRightsThatItHas) {
  fs::create_directories(support);
  WriteFile(prefs, kPrefs);
  WriteFile(log, "old\n");
  const auto obey = [] {
    for (const int right : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) prctl(PR_CAPBSET_DROP, right);
  };
  for (const mode_t mode : {0400U, 0U}) {
    chmod(prefs.c_str(), mode);
    chmod(log.c_str(), mode);
    chmod(prefs_folder.c_str(), 0500);
    EXPECT_EQ(WaitFor(Start({"-mode=scheduled"}, {}, obey)), 0);
    for (const fs::path& path : {prefs_folder, prefs, log}) chmod(path.c_str(), 0700);
    EXPECT_EQ(ReadFile(prefs) + ReadFile(log), kPrefs + "old\n");
  }
}

TEST_F(RunTest, GoesOnWhenItsFolderIsTakenAwayMeanwhile) {
  InstallNotifier();
  InstallLibrary();
  const int run =
      Start({}, {{"KDUPDATER_CALLBACK", "thread"}, {"KDUPDATER_CALLBACK_DELAY_MS", "200"}});
  while (ReadFile(log).find("inside waitForCFUCallBack.") == std::string::npos) usleep(1000);
  fs::rename(prefs_folder, top / "taken");
  EXPECT_EQ(WaitFor(run), 0);
  EXPECT_FALSE(fs::exists(prefs_folder));
  EXPECT_THAT(ReadFile(top / "taken/orlanul.log"), testing::HasSubstr("unloaded kodo library"));
}

// What may stand where a file belongs.
enum class Kind { kFolder, kFifo, kDevice, kLink, kDanglingLink };

class ForeignObjectTest : public RunTest, public testing::WithParamInterface<Kind> {
 protected:
  ForeignObjectTest() {
    fs::create_directories(support);
    fs::create_directories(prefs_folder);
    WriteFile(target, kPrefs);
  }

  void Put(const fs::path& path) const {
    fs::remove(path);
    switch (GetParam()) {
      case Kind::kFolder:
        return WriteFile(path / "Some file", "Some text");
      case Kind::kFifo:
        ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
        return;
      case Kind::kDevice:
        return fs::create_symlink("/dev/null", path);
      case Kind::kLink:
        return fs::create_symlink(target, path);
      case Kind::kDanglingLink:
        return fs::create_symlink(top / "none", path);
    }
  }

  // A run with the object at `path`, which stays what it is.
  void RunWith(const fs::path& path) {
    Put(path);
    const fs::file_status before = fs::symlink_status(path);
    EXPECT_EQ(Run({"-mode=scheduled"}).status, 0);
    EXPECT_EQ(fs::symlink_status(path).type(), before.type());
    EXPECT_EQ(fs::exists(path / "Some file"), GetParam() == Kind::kFolder);
  }

  const fs::path target = top / "Some target";
};

TEST_P(ForeignObjectTest, StandsWhereThePreferencesBelongAndStays) {
  RunWith(prefs);
  const bool is_link = GetParam() == Kind::kLink || GetParam() == Kind::kDanglingLink;
  EXPECT_EQ(ReadFile(prefs).find("LogLevel") != std::string::npos, is_link);
  EXPECT_EQ(ReadFile(target).find("SomebodyElses"), ReadFile(target).find("<", 50) + 1);
  EXPECT_FALSE(ReadFile(log).empty());
}

TEST_P(ForeignObjectTest, StandsWhereTheLogBelongsAndStays) {
  RunWith(log);
  EXPECT_TRUE(ReadFile(target).starts_with(kPrefs));
  EXPECT_NE(ReadFile(prefs).find("LogLevel"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Table, ForeignObjectTest,
                         testing::Values(Kind::kFolder, Kind::kFifo, Kind::kDevice, Kind::kLink,
                                         Kind::kDanglingLink));

}  // namespace
}  // namespace test
