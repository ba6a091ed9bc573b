// Stands in for the system where a test needs another machine: one with somebody at its screen,
// with certain users, or with a locked volume. The library takes the place of libsystemd, and comes
// before the C library, so that the product's own calls reach it.
#ifndef TESTS_SYSTEM_STAND_IN_H_
#define TESTS_SYSTEM_STAND_IN_H_

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>

namespace test {

/// What the system answers.
struct SystemStandIn {
  struct User {
    gid_t gid;
    std::string home;
  };
  bool has_seat = false;                  ///< whether systemd-logind keeps a file for seat0
  std::optional<uid_t> active_user = {};  ///< of seat0
  std::map<uid_t, User> users = {};       ///< the password database
  int look_ups_left = -1;                 ///< there until one throws; without end below 0
  std::string locked_volume = {};         ///< the folder on which it is mounted, if any
};

/// The one that all calls of this process go to. A test that changes it sets it to {} at its end.
SystemStandIn& System();

}  // namespace test

#endif  // TESTS_SYSTEM_STAND_IN_H_
