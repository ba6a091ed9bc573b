#include "esd/prefs/held_signals.h"

#include <pthread.h>

#include <csignal>
#include <initializer_list>

namespace esd {
namespace {

thread_local int t_holders = 0;
thread_local sigset_t t_former;  // the thread's mask before its first holder

}  // namespace

void HeldSignals::Hold() {
  if (held_) return;
  held_ = true;
  if (t_holders++ > 0) return;
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGXCPU, SIGXFSZ, SIGALRM, SIGVTALRM,
                           SIGPROF, SIGUSR1, SIGUSR2}) {
    sigaddset(&ending, signal);
  }
  pthread_sigmask(SIG_BLOCK, &ending, &t_former);
}

void HeldSignals::Deliver() {
  if (!held_) return;
  held_ = false;
  if (--t_holders == 0) pthread_sigmask(SIG_SETMASK, &t_former, nullptr);
}

}  // namespace esd
