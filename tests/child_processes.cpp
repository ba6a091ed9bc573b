#include <unistd.h>

#include <sstream>

#include "tests/test_support.h"

namespace test {

// proc(5)
std::vector<pid_t> ChildProcesses() {
  std::istringstream ids(ReadFile("/proc/self/task/" + std::to_string(gettid()) + "/children"));
  std::vector<pid_t> children;
  for (pid_t child = 0; ids >> child;) children.push_back(child);
  return children;
}

}  // namespace test
