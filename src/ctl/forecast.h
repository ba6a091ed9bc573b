// What a run would do, found out by looking: with the functions that a run decides with, and
// without a change to anything.
#ifndef CTL_FORECAST_H_
#define CTL_FORECAST_H_

#include <boost/date_time/gregorian/greg_date.hpp>
#include <optional>
#include <string>

#include "ctl/identifiers.h"
#include "ctl/prefs_view.h"
#include "ctl/value.h"

namespace ctl {

/// A statement: what is found, and why in a sentence that names the settings it rests on.
struct Finding {
  Id id;
  std::string why;
};

/// A run from its begin to its end.
struct Forecast {
  bool is_scheduled = false;
  boost::gregorian::date today;
  std::string user;                        ///< the user's name, or number, that the run acts as
  std::optional<std::string> preferences;  ///< the path of the file
  PrefsState preferences_state = PrefsState::kNoFolder;
  std::optional<std::string> administrator_preferences;
  bool wipes_preferences = false;  ///< whether an uninstall stamp makes the run remove them

  struct Log {
    std::optional<std::string> path;
    std::optional<int> level;  ///< as it is after the defaults were written back
    bool writes = false;       ///< whether the banner would reach the file
    Finding finding;
  } log;

  struct Updater {
    bool enabled = false;
    Finding finding;
  } updater;

  struct Check {
    std::optional<bool> due;  ///< nothing where the run does not ask
    std::optional<boost::gregorian::date> next_due;
    Finding finding;
  } check;

  struct Notifier {
    std::optional<std::string> path;
    bool would_start = false;
    Finding finding;
  } notifier;

  struct Library {
    std::string path;
    bool usable = false;
    Finding finding;
  } library;

  int exit_status = 0;
  /// The settings that were relied on, as Settings::list gives them.
  Value::Array settings;
};

/// The run that would begin now, in the mode given, if its date were `today`. Waits about a second
/// for each lock that is held.
Forecast ForecastRun(bool is_scheduled, const boost::gregorian::date& today);
/// The same, of the user's and the administrator's file as they were read.
Forecast ForecastRun(bool is_scheduled, const boost::gregorian::date& today,
                     const PrefsView& user_file, const PrefsView& admin_file);

}  // namespace ctl

#endif  // CTL_FORECAST_H_
