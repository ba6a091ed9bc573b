// The names of users.
#ifndef CTL_USER_NAME_H_
#define CTL_USER_NAME_H_

#include <sys/types.h>

#include <string>

namespace ctl {

/// The name of the user `uid`; the number, where the system knows none.
std::string UserName(uid_t uid);

}  // namespace ctl

#endif  // CTL_USER_NAME_H_
