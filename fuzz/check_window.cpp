// Any text as the time of the last check, and as the frequency of checks: an answer without an
// exception, and never sooner with a longer period. Input: the frequency, and from the second line
// on the time.
#include "driver/check_window.h"

#include <algorithm>

#include "esd/prefs/updater_prefs.h"
#include "fuzz/fuzz.h"

namespace {

using std::string;

// The machine is an empty one.
esd::VantreUpdaterPrefs& Prefs() {
  static const fuzz::ScratchFolder machine;
  setenv("HOME", machine.path().c_str(), 1);
  setenv("WAKERLY_ROOT", machine.path().c_str(), 1);
  auto& prefs = esd::VantreUpdaterPrefs::GetInstance(false);
  // Without a lock the store does not look after its file before each read.
  prefs.SetLockPolicy(nullptr);
  return prefs;
}

bool Ask(esd::VantreUpdaterPrefs& prefs, const string& last_check, const string& frequency) {
  esd::XMLDocumentNode* const time = prefs.GetPrefsNode("LastDateCheck", true);
  time->SetData(last_check);
  prefs.GetPrefsNode("UpdaterPrefSchedCheckFreq", true)->SetData(frequency);
  const bool elapsed = wakerly::IsScheduledCheckWindowElapsed();
  const string kept = time->GetData();
  CHECK(kept == last_check || (!elapsed && kept.size() == 10 && kept[4] == '-' && kept[7] == '-'));
  return elapsed;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static esd::VantreUpdaterPrefs& prefs = Prefs();
  std::string_view input = fuzz::Text(data, size);
  const string frequency(fuzz::TakeLine(input));
  const string last_check(input);

  const bool monthly = Ask(prefs, last_check, "2");
  const bool weekly = Ask(prefs, last_check, "1");
  const bool daily = Ask(prefs, last_check, "0");
  CHECK(!monthly || weekly);
  CHECK(!weekly || daily);
  CHECK(!Ask(prefs, last_check, "3") && !Ask(prefs, "", frequency));
  const bool elapsed = Ask(prefs, last_check, frequency);
  CHECK(!elapsed || daily);

  const std::size_t separator = last_check.find('T');
  const bool whole = separator != string::npos && separator != 0 &&
                     std::count(last_check.begin() + static_cast<std::ptrdiff_t>(separator),
                                last_check.end(), ':') == 2;
  CHECK(whole || last_check.empty() || monthly);
  return 0;
}
