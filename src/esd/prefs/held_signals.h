// Holding back the signals that end a process while something must not be left behind.
#ifndef ESD_PREFS_HELD_SIGNALS_H_
#define ESD_PREFS_HELD_SIGNALS_H_

namespace esd {

/// Holds back from the calling thread, between Hold and Deliver on that thread, the signals that
/// end a process from outside: SIGTERM, SIGINT, SIGHUP and SIGQUIT; those of limits and timers:
/// SIGXCPU, SIGXFSZ, SIGALRM, SIGVTALRM and SIGPROF; SIGUSR1 and SIGUSR2. Those that came meanwhile
/// are delivered when the thread's last holder lets go. Others are not touched.
class HeldSignals {
 public:
  HeldSignals() = default;
  ~HeldSignals() { Deliver(); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  /// Does nothing while this object holds already.
  void Hold();
  /// Ends the holding. Does nothing while this object does not hold.
  void Deliver();

 private:
  bool held_ = false;
};

}  // namespace esd

#endif  // ESD_PREFS_HELD_SIGNALS_H_
