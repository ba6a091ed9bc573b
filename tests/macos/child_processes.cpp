#include <libproc.h>
#include <unistd.h>

#include "tests/test_support.h"

namespace test {

std::vector<pid_t> ChildProcesses() {
  std::vector<pid_t> children(1024);
  const auto size = static_cast<int>(children.size() * sizeof(pid_t));
  const int count = proc_listchildpids(getpid(), children.data(), size);
  children.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return children;
}

}  // namespace test
