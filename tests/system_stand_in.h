// Stands in for the system where a test needs another machine: one with somebody at its screen,
// with certain users, or with a locked volume. The library takes the place of libsystemd, and comes
// before the C library, so that the product's own calls reach it.
#ifndef TESTS_SYSTEM_STAND_IN_H_
#define TESTS_SYSTEM_STAND_IN_H_

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace test {

/// What the system answers.
struct SystemStandIn {
  struct User {
    gid_t gid;
    std::string home;
  };

  /// Whether systemd-logind keeps a file for seat0.
  bool has_seat = false;
  /// The active user of seat0.
  std::optional<uid_t> active_user = {};
  /// The password database.
  std::map<uid_t, User> users = {};
  /// The effective user at each look-up in the password database.
  std::vector<uid_t> looked_up_as = {};
  /// Which of these look-ups throws, counted from 1; 0 for none.
  std::size_t throwing_look_up = 0;
  /// The folder on which a locked volume is mounted, if any.
  std::string locked_volume = {};
};

/// The one that all calls of this process go to. A test that changes it sets it to {} first.
SystemStandIn& System();

}  // namespace test

#endif  // TESTS_SYSTEM_STAND_IN_H_
