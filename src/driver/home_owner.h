// The user that a run which root started acts for.
#ifndef DRIVER_HOME_OWNER_H_
#define DRIVER_HOME_OWNER_H_

#include <sys/types.h>

#include <optional>

namespace wakerly {

/// When root runs the program with a HOME whose folder is another user's, becomes that user for
/// good, with the user's groups, and gives the id. Otherwise, or when the system refuses, nothing
/// changes and nothing is given. Call it before a file is touched, while there is one thread.
std::optional<uid_t> BecomeHomeOwner();

}  // namespace wakerly

#endif  // DRIVER_HOME_OWNER_H_
