// A program that is run to its end, or for as long as it is given.
#ifndef CTL_CHILD_PROCESS_H_
#define CTL_CHILD_PROCESS_H_

#include <optional>
#include <string>
#include <vector>

namespace ctl {

/// The descriptor that a child process writes its answer to. Its standard streams are on /dev/null.
inline constexpr int kAnswerDescriptor = 3;

/// How a child process ended.
struct ChildEnd {
  std::string answer;        ///< at most 64 KiB of what it wrote to kAnswerDescriptor
  bool was_stopped = false;  ///< it did not end in its time
  int status = 0;            ///< as waitpid(2) gives it
};

/// Runs the program `path` with `arguments`, for `seconds` at most. No process of its process group
/// is left behind, nor when this process gets a signal that ends it meanwhile, which is delivered
/// afterwards. Nothing, with errno telling why, when it cannot be started.
std::optional<ChildEnd> RunChild(const std::string& path, const std::vector<std::string>& arguments,
                                 int seconds);

}  // namespace ctl

#endif  // CTL_CHILD_PROCESS_H_
