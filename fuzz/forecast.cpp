// Preference files of any bytes, the user's and the administrator's, on any day: a forecast that
// changes no file, whose level, check and updater are what a store and the rules of a run make of
// the same files, and whose JSON and page can be printed, as can the doctor's and the list's.
// Input: the day, or a line that is none for a scheduled run, then the user's file up to a line of
// "%", then the administrator's.
#include "ctl/forecast.h"

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/gregorian/parsers.hpp>
#include <map>
#include <nlohmann/json.hpp>

#include "ctl/doctor.h"
#include "ctl/explain.h"
#include "ctl/prefs.h"
#include "driver/check_schedule.h"
#include "driver/log_settings.h"
#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/updater_folders.h"
#include "esd/prefs/updater_prefs.h"
#include "fuzz/document.h"
#include "fuzz/fuzz.h"
#include "platform/folder_making.h"

namespace {

namespace fs = std::filesystem;
using boost::gregorian::date;
using std::string;

// A machine with what a run needs. The launch agent is there, so that it changes no preference.
class Tree {
 public:
  Tree() {
    setenv("HOME", (folder_.path() / "home").c_str(), 1);
    setenv("WAKERLY_ROOT", folder_.path().c_str(), 1);
    for (const fs::path& file : {user, administrator, agent_}) {
      fs::create_directories(file.parent_path());
      fuzz::WriteFile(file, "something");
    }
    fs::create_directories(folder_.path() / "home/Library/Preferences");
    platform::OnlyPretendToMakeFolders();
  }

  // The time of the last change of everything there, by path.
  std::map<string, fs::file_time_type> State() const {
    std::map<string, fs::file_time_type> times;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
      times[entry.path()] = entry.last_write_time();
    }
    return times;
  }

 private:
  const fuzz::ScratchFolder folder_;
  const fs::path support_ = folder_.path() / "Library/Application Support/Vantre";
  const fs::path library_ = folder_.path() / "home/Library";
  const fs::path agent_ = library_ / "LaunchAgents/com.vantre.VantreOrlanUpdater-1.0.plist";

 public:
  const fs::path user =
      library_ / "Application Support/Vantre/OrlanUpdater/1.0/VantreUpdaterPrefs.dat";
  const fs::path administrator = support_ / "OrlanUpdaterInventory/1.0/VantreUpdaterAdminPrefs.dat";
};

template <typename T>
std::optional<T> Read(esd::PrefsWriter& store, const char* key, const T& otherwise) {
  T value{};
  return store.GetPref(key, value, otherwise) ? std::optional(value) : std::nullopt;
}

void CheckForecast(const ctl::Forecast& run, const Tree& tree) {
  esd::PrefsWriter user(tree.user, esd::kPrefsRootName);
  const auto level = Read(user, "LogLevel", wakerly::kLogLevelNotSet);
  CHECK(run.log.level.has_value() == level.has_value());
  CHECK(!level || run.log.level == wakerly::ChooseLog("", *level).level);

  const auto check = wakerly::ScheduleCheck(Read<string>(user, "LastDateCheck", ""),
                                            Read(user, "UpdaterPrefSchedCheckFreq", 0), run.today);
  CHECK(run.check.due == check.due);
  CHECK(!check.due_from || run.check.next_due >= run.today);

  esd::PrefsWriter administrator(tree.administrator, esd::kPrefsRootName);
  CHECK(run.updater.enabled == (Read(administrator, "Suppressed", false) == false));
  CHECK(run.exit_status == 0);
}

void CheckPrinted(const ctl::Answer& answer) {
  CHECK(nlohmann::json::accept(ctl::ToJson(answer.json)));
  const string page = answer.page.Render({.is_terminal = true, .width = 40});
  CHECK(std::none_of(page.begin(), page.end(), [](unsigned char byte) {
    return (byte < ' ' && byte != '\n') || byte == 0x7F;
  }));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Tree tree;
  std::string_view input = fuzz::Text(data, size);
  if (fuzz::MayDeclareEntity(input)) return 0;
  ctl::ExplainOptions options{.at = string(fuzz::TakeLine(input))};
  constexpr std::string_view kEnd = "\n%\n";
  const std::size_t end = std::min(input.find(kEnd), input.size());
  fuzz::WriteFile(tree.user, input.substr(0, end));
  fuzz::WriteFile(tree.administrator, input.substr(std::min(end + kEnd.size(), input.size())));

  const auto state = tree.State();
  std::optional<ctl::Answer> answer = ctl::Explain(options);
  if (!answer) {
    options = {.is_scheduled = true, .at = "2024-03-31"};
    answer = ctl::Explain(options);
  }
  CheckPrinted(*answer);
  CheckPrinted(ctl::Examine({}));
  CheckPrinted(ctl::ShowPrefs(std::nullopt));
  CheckForecast(ctl::ForecastRun(false, boost::gregorian::from_simple_string(*options.at)), tree);
  CHECK(tree.State() == state);
  return 0;
}
