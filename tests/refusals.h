// What a machine refuses to a process. For child processes: nothing takes it back.
#ifndef TESTS_REFUSALS_H_
#define TESTS_REFUSALS_H_

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>

namespace test {

/// Lets a system call fail with `error` from now on, in whatever is executed, too; with `flags`
/// only where its third argument has one of them.
inline void Refuse(int error, int call, unsigned flags = 0) {
  const unsigned result = SECCOMP_RET_ERRNO | static_cast<unsigned>(error);
  const unsigned short jump = flags == 0 ? BPF_JGE : BPF_JSET;  // no argument is less than 0
  sock_filter filter[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 3),
                          BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
                          BPF_JUMP(BPF_JMP | jump | BPF_K, flags, 0, 1),
                          BPF_STMT(BPF_RET | BPF_K, result),
                          BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program = {std::size(filter), filter};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  // For all threads: a sanitizer may have one of its own.
  syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program);
}

/// As on a disk on which no file can be larger. RLIM_INFINITY gives the room back.
inline void LimitFileSize(rlim_t size) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = std::min(size, limit.rlim_max);
  setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace test

#endif  // TESTS_REFUSALS_H_
