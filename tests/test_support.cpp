#include "tests/test_support.h"

#include <grp.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace test {
namespace {

// False when that takes longer than kDeadline.
bool ComesToHold(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kDeadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    usleep(300);
  }
  return true;
}

void EndLateChild(pid_t child) {
  ADD_FAILURE() << "child process " << child << " lasted longer than " << kDeadline.count()
                << " seconds and was killed";
  kill(child, SIGKILL);
}

}  // namespace

TreeTest::TreeTest() : user_(geteuid()), mask_(umask(022)) {
  for (char** text = environ; *text != nullptr; ++text) environment_.emplace_back(*text);
  fs::create_directories(home);
  fs::create_directories(root);
  setenv("HOME", home.c_str(), 1);
  setenv("WAKERLY_ROOT", root.c_str(), 1);
  // What a killed process leaves there goes with the folder.
  setenv("TMPDIR", top.c_str(), 1);
  for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG", "TZ"}) unsetenv(name);
  tzset();
}

TreeTest::~TreeTest() {
  WaitForAllChildren();
  EXPECT_EQ(seteuid(user_), 0) << "the former effective user is not given back";
  std::error_code ignored;
  for (const auto& entry : fs::recursive_directory_iterator(
           top, fs::directory_options::skip_permission_denied, ignored)) {
    if (entry.is_regular_file(ignored)) RemoveLogLock(entry.path());
  }
  umask(mask_);
  fs::current_path(folder_);
  *environ = nullptr;
  for (const std::string& variable : environment_) {
    const std::size_t name = variable.find('=');
    setenv(variable.substr(0, name).c_str(), variable.c_str() + name + 1, 1);
  }
  tzset();
}

std::string ReadFile(const fs::path& path) {
  std::error_code ignored;
  if (fs::is_fifo(path, ignored)) return "";
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

Lines ReadLines(const fs::path& path) {
  std::istringstream text(ReadFile(path));
  Lines lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

void WriteFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

Lines Names(const fs::path& folder) {
  Lines names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

std::string Rights(const fs::path& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return "nothing";
  return RightsText(status.st_mode & 07777, status.st_uid, status.st_gid);
}

std::string RightsText(mode_t mode, uid_t owner, gid_t group) {
  std::ostringstream text;
  text << "mode 0" << std::oct << mode << std::dec << ", owner " << owner << ", group " << group;
  return text.str();
}

std::string Text(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

void MakeEmptyLog(const fs::path& log) {
  WriteFile(log, "");
  RemoveLogLock(log);
}

void RemoveLogLock(const fs::path& log) {
  const key_t key = ftok(log.c_str(), 11);
  const int set = key == -1 ? -1 : semget(key, 0, 0);
  if (set != -1) semctl(set, 0, IPC_RMID);
}

void RemoveLog(const fs::path& log) {
  RemoveLogLock(log);
  fs::remove_all(log);
}

Lines ReadLog(const fs::path& path) {
  static const std::regex layout(
      R"(^\d\d/\d\d/\d\d \d\d:\d\d:\d\d:\d\d\d( \| \[\w+\] \|(?: [^|]*\|){6} )\d+( \| .*)$)");
  Lines lines = ReadLines(path);
  for (std::string& line : lines) line = std::regex_replace(line, layout, "TIME$1TID$2");
  return lines;
}

Lines HeaderMessages() {
  const std::string stars(78, '*');
  return {stars, "Bit: 64", "OS Locale: en_US", "OS Name: Mac OS 0.0.0", "OS Version: 0.0.0",
          stars};
}

Lines LinesAfterHeader(const Lines& log) {
  const std::size_t header = std::min(log.size(), HeaderMessages().size());
  return {log.begin() + static_cast<std::ptrdiff_t>(header), log.end()};
}

Lines Messages(const Lines& lines) {
  Lines messages;
  for (const std::string& line : lines) {
    const std::size_t separator = line.rfind(" | ");
    messages.push_back(separator == std::string::npos ? line : line.substr(separator + 3));
  }
  return messages;
}

bool Eventually(const std::string& what, const std::function<bool()>& condition) {
  const bool holds = ComesToHold(condition);
  if (!holds) ADD_FAILURE() << "waited " << kDeadline.count() << " seconds in vain for " << what;
  return holds;
}

int InChild(const std::function<int()>& body) { return WaitFor(StartChild(body)); }

pid_t StartChild(const std::function<int()>& body) {
  std::cout << std::flush;
  const pid_t child = fork();
  if (child != 0) return child;
  // GoogleTest would catch what is thrown, and run the next test here.
  [&]() noexcept { _exit(body()); }();
  return child;
}

int WaitFor(pid_t child) {
  int status = 0;
  pid_t ended = 0;
  const auto end = [&](int options) { return (ended = waitpid(child, &status, options)) != 0; };
  if (!ComesToHold([&] { return end(WNOHANG); })) {
    EndLateChild(child);
    end(0);
  }
  if (ended < 0) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void RunAll(int count, const std::function<int(int)>& body) {
  std::vector<pid_t> children;
  for (int number = 0; number < count; ++number) {
    children.push_back(StartChild([&] { return body(number); }));
  }
  for (const pid_t child : children) EXPECT_EQ(WaitFor(child), 0) << "a process has failed";
}

void WaitForAllChildren() {
  if (ComesToHold([] { return waitpid(-1, nullptr, WNOHANG) < 0; })) return;
  for (const pid_t child : ChildProcesses()) {
    EndLateChild(child);
    waitpid(child, nullptr, 0);
  }
}

void BecomeOrdinaryUser() {
  if (geteuid() != 0) return;
  if (setgroups(0, nullptr) != 0 || setgid(kOrdinaryUser) != 0 || setuid(kOrdinaryUser) != 0) {
    throw std::system_error(errno, std::generic_category(), "becoming an ordinary user");
  }
}

void ExpectInChild(const std::function<void()>& body) {
  const int status = InChild([&] {
    body();
    std::cout << std::flush;
    return testing::Test::HasFailure() ? 1 : 0;
  });
  EXPECT_EQ(status, 0) << "what failed in the child process stands above";
}

}  // namespace test
