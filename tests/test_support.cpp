#include "tests/test_support.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

namespace test {
namespace {

fs::path MakeTemporaryFolder() {
  std::string path = fs::temp_directory_path() / "wakerly-test-XXXXXX";
  return mkdtemp(path.data());
}

void RemoveLogLock(const fs::path& log) {
  const key_t key = ftok(log.c_str(), 11);
  const int set = key == -1 ? -1 : semget(key, 0, 0);
  if (set != -1) semctl(set, 0, IPC_RMID);
}

}  // namespace

TreeTest::TreeTest() : top(MakeTemporaryFolder()), home(top / "home"), root(top / "root") {
  fs::create_directories(home);
  fs::create_directories(root);
  setenv("HOME", home.c_str(), 1);
  setenv("WAKERLY_ROOT", root.c_str(), 1);
  // What a killed process leaves there goes with the folder.
  setenv("TMPDIR", top.c_str(), 1);
  for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) unsetenv(name);
}

TreeTest::~TreeTest() {
  for (const auto& entry : fs::recursive_directory_iterator(top)) {
    if (entry.is_regular_file()) RemoveLogLock(entry.path());
  }
  while (wait(nullptr) > 0) {
  }
  fs::remove_all(top);
}

std::string ReadFile(const fs::path& path) {
  if (fs::is_fifo(path)) return "";
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::vector<std::string> ReadLines(const fs::path& path) {
  std::istringstream text(ReadFile(path));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

void WriteFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> Names(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> ReadLog(const fs::path& path) {
  static const std::regex layout(
      R"(^\d\d/\d\d/\d\d \d\d:\d\d:\d\d:\d\d\d( \| \[\w+\] \|(?: [^|]*\|){6} )\d+( \| .*)$)");
  std::vector<std::string> lines = ReadLines(path);
  for (std::string& line : lines) line = std::regex_replace(line, layout, "TIME$1TID$2");
  return lines;
}

std::vector<std::string> HeaderMessages() {
  const std::string stars(78, '*');
  return {stars, "Bit: 64", "OS Locale: en_US", "OS Name: Mac OS 0.0.0", "OS Version: 0.0.0",
          stars};
}

std::vector<std::string> Messages(const std::vector<std::string>& lines) {
  std::vector<std::string> messages;
  for (const std::string& line : lines) messages.push_back(line.substr(line.rfind(" | ") + 3));
  return messages;
}

int InChild(const std::function<int()>& body) { return WaitFor(StartChild(body)); }

int StartChild(const std::function<int()>& body) {
  const int child = fork();
  if (child == 0) _exit(body());
  return child;
}

int WaitFor(int child) {
  int status = 0;
  if (waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace test
