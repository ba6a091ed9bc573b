// The commands that mend, as a shell reads them.
#include "ctl/remedy.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tests/test_support.h"

namespace test {
namespace {

class Remedy : public TreeTest {
 protected:
  // Pastes `command` into a shell, and gives what that prints.
  std::string Run(const std::string& command) const {
    const fs::path out = top / "out";
    WriteFile(top / "script", command + "\n");
    const std::string line = "sh " + (top / "script").string() + " > " + out.string() + " 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << command << "\n" << ReadFile(out);
    return ReadFile(out);
  }

  const std::string odd = "-a 'b'\n\"$HOME\" `id` \\ *;&|<>(){}~#!\t\xC3\xA4\xFF";
};

TEST_F(Remedy, QuotesAnyTextAsOneWord) {
  for (const std::string& text : {odd, std::string(), std::string("'"), std::string("''x'\\''")}) {
    EXPECT_EQ(Run("printf '[%s]' " + ctl::ShellWord(text)), "[" + text + "]");
  }
}

TEST_F(Remedy, ActsOnThePathAndNothingElse) {
  const fs::path folder = top / "folder", path = folder / odd.substr(1);
  WriteFile(path, "kept");
  Run(ctl::SetAside(path));
  const Lines names = Names(folder);
  ASSERT_EQ(names.size(), 1U);
  const std::string when = "aside-20261122035117";
  EXPECT_EQ(names[0].substr(0, 6), "aside-") << "else a roll-over takes it for a backup";
  EXPECT_EQ(names[0].substr(std::min(when.size(), names[0].size())),
            "-" + path.filename().string());
  EXPECT_EQ(ReadFile(folder / names[0]), "kept");
  Run(ctl::Remove(folder / names[0]));
  EXPECT_EQ(Text(Names(folder)), "");
}

TEST_F(Remedy, GivesTheRightsThatAreMissing) {
  const fs::path path = top / odd.substr(1);
  WriteFile(path, "");
  const std::tuple<mode_t, const char*, const char*> rows[] = {
      {0000, "r", "0400"},  {0077, "rw", "0677"}, {0600, "rwx", "0700"},
      {0600, "rw", "none"}, {0500, "rx", "none"}, {0500, "w", "0700"}};
  for (const auto& [mode, rights, found] : rows) {
    fs::permissions(path, fs::perms(mode));
    const auto command = ctl::GiveToUser(path, rights);
    if (command) Run(*command);
    EXPECT_EQ(command ? Rights(path).substr(5, 4) : "none", found) << mode << " and " << rights;
  }
  EXPECT_EQ(ctl::GiveToUser(top / "nothing", "r"), std::nullopt);
  fs::permissions(path, fs::perms(0600));
  Run(ctl::GiveToAll(path, "rx"));
  EXPECT_EQ(Rights(path).substr(5, 4), "0755");
}

// Only root has files of others to show it with.
TEST_F(Remedy, AsksForAnAdministratorWhereItTakesOne) {
  const fs::path path = top / "folder/file";
  WriteFile(path, "");
  fs::permissions(top, fs::perms(0755));
  if (geteuid() != 0) return;
  const std::string word = ctl::ShellWord(path);
  const auto expect_commands = [&](const std::string& sudo) {
    EXPECT_EQ(ctl::Sudo(), sudo);
    EXPECT_EQ(ctl::Remove(path), sudo + "rm " + word);
    EXPECT_EQ(ctl::GiveToAll(path, "r"), sudo + "chmod a+r " + word);
  };
  expect_commands("");
  ExpectInChild([&] {
    BecomeOrdinaryUser();
    expect_commands("sudo ");
    EXPECT_EQ(ctl::GiveToUser(path, "r"), std::nullopt) << "outside of the home folder";
    setenv("HOME", top.c_str(), 1);
    EXPECT_EQ(ctl::GiveToUser(path, "r"), "sudo chown 'nobody' " + word);
    EXPECT_EQ(ctl::GiveToUser(path, "rx"),
              "sudo chown 'nobody' " + word + " && chmod u+rx " + word);
  });
  EXPECT_EQ(chown(path.parent_path().c_str(), kOrdinaryUser, kOrdinaryUser), 0);
  ExpectInChild([&] {
    BecomeOrdinaryUser();
    EXPECT_EQ(ctl::Remove(path), "rm " + word) << "from a folder of one's own";
  });
}

}  // namespace
}  // namespace test
