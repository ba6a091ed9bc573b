// A notifier to run Wakerly against. It appends one line to the file that NOTIFIER_TRACE names,
// which tells how it was started, and ends. Without that variable it only ends; a file that cannot
// be written, such as one without a name, is reported on standard error and makes the exit
// status 1.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool IsNullDevice(int descriptor) {
  struct stat status {};
  struct stat null_device {};
  return fstat(descriptor, &status) == 0 && stat("/dev/null", &null_device) == 0 &&
         status.st_rdev == null_device.st_rdev && S_ISCHR(status.st_mode);
}

int CountInheritedFiles() {
  int count = 0;
  for (int descriptor = 3; descriptor < 256; ++descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) == 0) ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  const char* path = std::getenv("NOTIFIER_TRACE");
  if (path == nullptr) return 0;
  const bool quiet = IsNullDevice(0) && IsNullDevice(1) && IsNullDevice(2);
  const int inherited = CountInheritedFiles();
  std::FILE* trace = std::fopen(path, "a");
  if (trace == nullptr) {
    std::fprintf(stderr, "notifier: NOTIFIER_TRACE names \"%s\": %s\n", path, std::strerror(errno));
    return 1;
  }
  std::fprintf(trace,
               "started %s, arguments=%d own_session=%s standard_streams=%s other_files=%d\n",
               argv[0], argc - 1, getsid(0) == getpid() ? "yes" : "no",
               quiet ? "/dev/null" : "inherited", inherited);
  std::fclose(trace);
  return 0;
}
