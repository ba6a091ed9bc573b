// What a look foretells, beside what then comes of it: folders that could be made, files that the
// system could run or load, and the log that lines would go to.
#include <fcntl.h>
#include <unistd.h>

#include "esd/log/updater_log.h"
#include "platform/folder_making.h"
#include "platform/processes.h"
#include "platform/program_file.h"
#include "tests/log_support.h"

namespace test {
namespace {

using platform::ProgramFit;

using Foresight = TreeTest;

class FolderForesight : public TreeTest {
 protected:
  ~FolderForesight() override { Open(); }

  // Else an ordinary user could not remove what is in them.
  void Open() const {
    for (const char* name : {"unsearchable", "closed"}) {
      std::error_code ignored;
      fs::permissions(work / name, fs::perms(0700), ignored);
    }
  }
  // Folders and what bars the way to others, anew.
  void Stage() const {
    Open();
    fs::remove_all(work);
    for (const char* name : {"made", "closed/made", "unsearchable/made", "sticky"}) {
      fs::create_directories(work / name);
    }
    WriteFile(work / "file", "");
    fs::create_symlink("gone", work / "dangling");
    fs::create_symlink("made", work / "link");
    fs::create_symlink("file", work / "link to file");
    const std::pair<const char*, int> modes[] = {
        {"..", 0755},   {".", 0777},      {"made", 0777},        {"sticky", 01777},
        {"file", 0777}, {"closed", 0555}, {"unsearchable", 0666}};
    for (const auto& [name, mode] : modes) fs::permissions(work / name, fs::perms(mode));
  }
  // What is said of a path from the folder that all is in, and what making it comes to.
  void ExpectForesight(const std::string& path, bool can_be) const {
    Stage();
    ExpectInChild([&] {
      fs::current_path(work);
      if (geteuid() == 0) BecomeOrdinaryUser();
      EXPECT_EQ(platform::CouldMakeFolder(path), can_be) << '"' << path << '"';
      std::error_code error;
      fs::create_directories(path, error);
      EXPECT_EQ(fs::is_directory(path, error), can_be) << "made, \"" << path << '"';
    });
  }

  const fs::path work = top / "work";
};

TEST_F(FolderForesight, TellsWhatCanBeMade) {
  const Lines can = {"made",     "made/",           "made/a",      "made/a b/c//d/",
                     "new",      "./new/../made/x", "link",        "link/",
                     "link/x/y", "closed",          "closed/made", "sticky/x"};
  const Lines cannot = {
      "file",       "file/",          "file/x/y",   "dangling",          "dangling/",
      "dangling/x", "link to file/x", "closed/x/y", "unsearchable/made", "unsearchable/x"};
  for (const auto& [paths, can_be] : {std::pair{can, true}, {cannot, false}}) {
    for (const std::string& path : paths) {
      ExpectForesight(path, can_be);
      ExpectForesight(work / path, can_be);
    }
  }
  ExpectForesight("", false);
}

TEST_F(Foresight, TellsWhatMachineCodeIsFor) {
  const std::string own = ReadFile("/proc/self/exe").substr(0, 20);
  const auto patched = [&](std::size_t at, int byte) {  // elf(5)
    std::string head = own;
    head[at] = static_cast<char>(byte);
    return head;
  };
  constexpr std::size_t kClass = 4, kData = 5, kType = 16, kMachine = 18;
  const auto other = [&](std::size_t at) { return patched(at, own[at] ^ 3); };
  constexpr ProgramFit kFits = ProgramFit::kFits, kNone = ProgramFit::kNoProgram,
                       kOther = ProgramFit::kOtherProcessor;
  const std::tuple<const char*, std::string, ProgramFit, ProgramFit> rows[] = {
      {"a library or a program", patched(kType, 3), kFits, kFits},
      {"a program", patched(kType, 2), kFits, kNone},
      {"an object file", patched(kType, 1), kNone, kNone},
      {"a core", patched(kType, 4), kNone, kNone},
      {"other bits", other(kClass), kOther, kOther},
      {"other order", other(kData), kOther, kOther},
      {"another machine", other(kMachine), kOther, kOther},
      {"another machine by its second byte", other(kMachine + 1), kOther, kOther},
      {"cut off", own.substr(0, 19), kNone, kNone},
      {"empty", "", kNone, kNone},
      {"no ELF", patched(0, 'E'), kNone, kNone},
      {"a script", "#!/bin/sh\n", kFits, kNone}};
  for (const auto& [name, head, run, load] : rows) {
    WriteFile(top / "code", head);
    EXPECT_EQ(platform::FitToRun(top / "code"), run) << name;
    EXPECT_EQ(platform::FitToLoad(top / "code"), load) << name;
  }
  for (const fs::path& path : {top / "none", top}) {
    EXPECT_EQ(platform::FitToRun(path), ProgramFit::kUnreadable) << path;
    EXPECT_EQ(platform::FitToLoad(path), ProgramFit::kUnreadable) << path;
  }
}

TEST_F(Foresight, TellsWhetherAScriptRuns) {
  WriteFile(top / "plain", "");
  const fs::path script = top / "script";
  for (const auto& [line, runs] : {std::pair<std::string, bool>{"#!/bin/true", true},
                                   {"#!/bin/true\n", true},
                                   {"#! \t/bin/true  -e \nmore", true},
                                   {"#!/bin/true\t-e\n", true},
                                   {"#!", false},
                                   {"#!\n/bin/true", false},
                                   {"#! \n", false},
                                   {"#!/bin/true\r\n", false},
                                   {"#!/no/such\n", false},
                                   {"#!/bin\n", false},
                                   {"#!" + (top / "plain").string() + "\n", false},
                                   {"#!true\n", false},
                                   {" #!/bin/true\n", false}}) {
    WriteFile(script, line);
    fs::permissions(script, fs::perms(0755));
    EXPECT_EQ(platform::FitToRun(script) == ProgramFit::kFits, runs) << '"' << line << '"';
    const int status = InChild([&] {
      execl(script.c_str(), script.c_str(), nullptr);
      return 127;
    });
    EXPECT_EQ(status, runs ? 0 : 127) << "the system, of \"" << line << '"';
  }
}

class Processes : public TreeTest {
 protected:
  // Starts a program under that name, which waits to be killed.
  pid_t Start(const std::string& name, uid_t user) const {
    fs::permissions(top, fs::perms(0755));
    fs::copy_file("/bin/sleep", top / name, fs::copy_options::skip_existing);
    const pid_t child = StartChild([&] {
      if (user != geteuid()) BecomeOrdinaryUser();
      execl((top / name).c_str(), "another name", "60", nullptr);
      return 127;
    });
    const std::string link = "/proc/" + std::to_string(child) + "/exe";
    Eventually("the program to run", [&] { return fs::read_symlink(link) == top / name; });
    return child;
  }
  static void End(pid_t child) {
    kill(child, SIGKILL);
    EXPECT_EQ(WaitFor(child), 128 + SIGKILL);
  }
  // As "id of user: executable", a line each.
  static std::string Found(const std::string& name) {
    std::string text;
    for (const platform::Process& process : platform::FindProcesses(name)) {
      text += Line(static_cast<pid_t>(process.id), process.uid, process.executable);
    }
    return text;
  }
  static std::string Line(pid_t id, uid_t user, const std::string& executable) {
    return std::to_string(id) + " of " + std::to_string(user) + ": " + executable + "\n";
  }
};

TEST_F(Processes, AreFoundByTheNameOfTheirExecutable) {
  const bool is_root = geteuid() == 0;
  const uid_t user = is_root ? kOrdinaryUser : geteuid();
  const std::string name = "wk" + std::to_string(getpid()), path = top / name;
  const std::string longer = name + " (deleted)";
  const pid_t one = Start(name, geteuid()), long_one = Start(longer + "x", geteuid());
  const pid_t other = Start(name, user);
  const std::string both = Line(one, geteuid(), path) + Line(other, user, path);
  EXPECT_EQ(Found(name), both);
  EXPECT_EQ(Found(longer + "x"), Line(long_one, geteuid(), path + " (deleted)x"));
  EXPECT_EQ(Found(name.substr(0, name.size() - 1)) + Found("another name") + Found(path), "");
  fs::remove(path);
  EXPECT_EQ(Found(name), both) << "after an update has removed the file";
  if (is_root) {
    ExpectInChild([&] {
      BecomeOrdinaryUser();
      EXPECT_EQ(Found(name), Line(one, 0, name) + Line(other, user, path))
          << "the system keeps the path of another user's to itself";
    });
  }
  End(one);
  End(other);
  End(long_one);
  EXPECT_EQ(Found(name), "");
  const std::string own = fs::read_symlink("/proc/self/exe").filename();
  EXPECT_EQ(Found(own).find(std::to_string(getpid()) + " of "), std::string::npos);
}

// The name of a path may hold either slash; where it names no folder, the log goes elsewhere.
TEST_F(LogTest, GoesToTheFileThatIsForetold) {
  fs::create_directories(top / "a");
  fs::current_path(top);
  for (const std::string& path :
       {log.string(), (top / "a/x").string(), (top / "a/").string(), (top / "a\\x.log").string(),
        std::string("own.log"), std::string("a/x.log"), std::string()}) {
    ExpectInChild([&] {
      const auto foretold = esd::UpdaterLogFile(path);
      esd::InitUpdaterLog(path, 2, "", "", "");
      ASSERT_TRUE(foretold);
      EXPECT_NE(ReadFile(*foretold).find(esd::kBannerMessage), std::string::npos)
          << "no banner in " << *foretold << ", which was foretold for \"" << path << '"';
    });
  }
}

}  // namespace
}  // namespace test
