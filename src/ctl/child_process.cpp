#include "ctl/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>

#include "esd/prefs/held_signals.h"
#include "platform/file_descriptor.h"

// Not every system's headers declare it.
extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace ctl {
namespace {

using Clock = std::chrono::steady_clock;
using platform::FileDescriptor;

// Above the descriptors that the child gets.
FileDescriptor MoveUp(int number) {
  constexpr int kLowest = 10;
  const FileDescriptor low(number);
  return FileDescriptor(fcntl(number, F_DUPFD_CLOEXEC, kLowest));
}

struct Pipe {
  FileDescriptor reader;
  FileDescriptor writer;
};

std::optional<Pipe> MakePipe() {
  int numbers[2];
  if (pipe(numbers) != 0) return std::nullopt;
  Pipe made{MoveUp(numbers[0]), MoveUp(numbers[1])};
  if (!made.reader || !made.writer) return std::nullopt;
  fcntl(made.reader.number(), F_SETFL, O_NONBLOCK);
  return made;
}

// What the child does with its descriptors, before it is the program.
class FileActions {
 public:
  explicit FileActions(int writer) {
    posix_spawn_file_actions_init(&actions_);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_adddup2(&actions_, writer, kAnswerDescriptor);
  }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

// A process group of its own, no signal blocked, and none ignored of those that this program
// ignores.
class Attributes {
 public:
  Attributes() {
    sigset_t none;
    sigset_t ignored;
    sigemptyset(&none);
    sigemptyset(&ignored);
    sigaddset(&ignored, SIGPIPE);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &ignored);
    posix_spawnattr_setpgroup(&attributes_, 0);
    posix_spawnattr_setflags(
        &attributes_,
        static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
  }
  ~Attributes() { posix_spawnattr_destroy(&attributes_); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

pid_t Spawn(const std::string& path, std::vector<std::string> arguments, int writer) {
  std::string name = path;
  std::vector<char*> words = {name.data()};
  for (std::string& argument : arguments) words.push_back(argument.data());
  words.push_back(nullptr);
  const FileActions actions(writer);
  const Attributes attributes;
  pid_t child = -1;
  errno = posix_spawn(&child, path.c_str(), actions.get(), attributes.get(), words.data(), environ);
  return errno == 0 ? child : -1;
}

// Takes what is there, within the limit. False at the end.
bool Drain(int reader, std::string& text) {
  constexpr std::size_t kLimit = std::size_t{64} * 1024;
  char block[4096];
  ssize_t size = 0;
  while ((size = read(reader, block, sizeof block)) > 0) {
    text.append(block, static_cast<std::size_t>(size));
    if (text.size() > kLimit) text.resize(kLimit);
  }
  return size < 0;
}

// Whether a signal came that is to end this process.
bool IsInterrupted() {
  sigset_t pending;
  sigemptyset(&pending);
  sigpending(&pending);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGALRM}) {
    if (sigismember(&pending, signal) == 1) return true;
  }
  return false;
}

// The child stays to be waited for, so that its number is given to no other process.
bool HasEnded(pid_t child) {
  siginfo_t info{};
  const int result = waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT);
  return result != 0 || info.si_pid == child;
}

}  // namespace

std::optional<ChildEnd> RunChild(const std::string& path, const std::vector<std::string>& arguments,
                                 int seconds) {
  constexpr int kPauseMilliseconds = 20;
  std::signal(SIGCHLD, SIG_DFL);  // who ignores it hears of no child's end
  esd::HeldSignals signals;
  signals.Hold();
  std::optional<Pipe> pipe = MakePipe();
  const pid_t child = pipe ? Spawn(path, arguments, pipe->writer.number()) : -1;
  if (child < 0) return std::nullopt;
  pipe->writer.Close();
  const auto deadline = Clock::now() + std::chrono::seconds(seconds);
  ChildEnd end;
  pollfd input{pipe->reader.number(), POLLIN, 0};
  while (!HasEnded(child) && !end.was_stopped) {
    poll(&input, 1, kPauseMilliseconds);
    if (input.fd >= 0 && input.revents != 0 && !Drain(input.fd, end.answer)) input.fd = -1;
    end.was_stopped = Clock::now() >= deadline || IsInterrupted();
  }
  kill(-child, SIGKILL);
  while (waitpid(child, &end.status, 0) < 0 && errno == EINTR) {
  }
  Drain(pipe->reader.number(), end.answer);
  return end;
}

}  // namespace ctl
