#include "welko/effective_user.h"

#include <unistd.h>

namespace welko {

EffectiveUser::EffectiveUser(uid_t user) : former_(geteuid()), switched_(seteuid(user) == 0) {}

EffectiveUser::~EffectiveUser() {
  // The former user is the real or the saved one, so the way back is always open.
  [[maybe_unused]] const int ignored = seteuid(former_);
}

}  // namespace welko
