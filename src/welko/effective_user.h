// Acting as another user for the length of a scope.
#ifndef WELKO_EFFECTIVE_USER_H_
#define WELKO_EFFECTIVE_USER_H_

#include <sys/types.h>

namespace welko {

/// Makes `user` the process's effective user and gives the former one back when destroyed. The
/// switch concerns all threads of the process.
class EffectiveUser {
 public:
  /// Tries the switch; switched() tells whether it was allowed.
  explicit EffectiveUser(uid_t user);
  ~EffectiveUser();
  EffectiveUser(const EffectiveUser&) = delete;
  EffectiveUser& operator=(const EffectiveUser&) = delete;

  /// Whether the system allowed the switch; otherwise the process acts as before.
  bool switched() const { return switched_; }

 private:
  const uid_t former_;
  const bool switched_;
};

}  // namespace welko

#endif  // WELKO_EFFECTIVE_USER_H_
