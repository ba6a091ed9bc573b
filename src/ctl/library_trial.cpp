#include "ctl/library_trial.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <sstream>
#include <string_view>
#include <vector>

#include "ctl/child_process.h"
#include "launcher/client_library.h"
#include "launcher/kd_client.h"
#include "platform/bundle.h"
#include "welko/support_log.h"

namespace ctl {
namespace {

// The answer is lines: kRefusal with the loader's words, or each entry point behind kHas or kLacks;
// kDone ends it.
///@{
constexpr std::string_view kHas = "has ";
constexpr std::string_view kRefusal = "refused ";
constexpr std::string_view kLacks = "lacks ";
constexpr std::string_view kDone = "done";
///@}

void Say(const std::string& line) {
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t ignored = write(kAnswerDescriptor, text.data(), text.size());
}

// The hook of welko::NativeLibrary; the last two arguments are the path and the loader's words.
void SayRefusal(int /*level*/, const char* /*logger*/, const char* /*module*/, const char* /*file*/,
                const char* /*function*/, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  va_arg(arguments, const char*);
  const char* const words = va_arg(arguments, const char*);
  va_end(arguments);
  std::string line = words != nullptr ? words : "";
  std::replace(line.begin(), line.end(), '\n', ' ');
  Say(std::string(kRefusal) + line);
}

// What follows `begin` in each line that begins so, with commas between.
std::string Find(const std::vector<std::string>& lines, std::string_view begin) {
  std::string found;
  for (const std::string& line : lines) {
    if (!line.starts_with(begin)) continue;
    found += (found.empty() ? "" : ", ") + line.substr(begin.size());
  }
  return found;
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string DescribeStatus(int status) {
  if (WIFSIGNALED(status)) return std::string("the signal ") + strsignal(WTERMSIG(status));
  return "exit status " + std::to_string(WEXITSTATUS(status));
}

Check Judge(const std::string& path, const ChildEnd& end) {
  const std::vector<std::string> lines = SplitLines(end.answer);
  if (end.was_stopped) {
    return {Grade::kBad, Id::kLibraryHangs,
            "Loading " + path + " had not ended after " + std::to_string(kTrialSeconds) +
                " seconds: every run waits in it."};
  }
  if (lines.empty() || lines.back() != kDone) {
    return {Grade::kBad, Id::kLibraryCrashes,
            "Loading " + path + " ended the process, with " + DescribeStatus(end.status) + "."};
  }
  const std::string refusal = Find(lines, kRefusal);
  if (!refusal.empty()) {
    return {Grade::kBad, Id::kLibraryDoesNotLoad, "The loader says: " + refusal};
  }
  const std::string missing = Find(lines, kLacks);
  if (!missing.empty()) {
    return {Grade::kBad, Id::kLibraryEntryPointMissing, path + " lacks " + missing + "."};
  }
  return {Grade::kOk, Id::kLibraryLoads, path + " loads, and has " + Find(lines, kHas) + "."};
}

}  // namespace

Check TryLibrary(const std::string& path) {
  const std::optional<ChildEnd> end =
      RunChild(platform::MainExecutablePath(), {kTrialCommand, path}, kTrialSeconds);
  if (end) return Judge(path, *end);
  return {
      Grade::kBad, Id::kLibraryNotTried,
      std::string("No process can be started to load the library: ") + std::strerror(errno) + "."};
}

void LoadForTrial(const std::string& path) {
  // The parent ends this process, unless it was killed itself.
  alarm(kTrialSeconds + 1);
  const rlimit no_core{0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  welko::g_support_log_hook = &SayRefusal;
  wakerly::ClientLibrary library;
  if (library.Load(path)) {
    for (const char* name : {kKDGetLatestName, kKDInvokeName, kKDReleaseName}) {
      Say(std::string(library.GetSymbol(name) != nullptr ? kHas : kLacks) + name);
    }
  }
  Say(std::string(kDone));
  _exit(0);
}

}  // namespace ctl
