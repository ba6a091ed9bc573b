#include "ctl/prefs.h"

#include <utility>
#include <vector>

#include "ctl/prefs_list.h"
#include "ctl/user_settings.h"
#include "esd/prefs/updater_folders.h"

namespace ctl {
namespace {

// One file as it is shown.
struct ListedFile {
  const char* title;
  const PrefsView& view;
  bool is_locked;
  bool is_wiped;
  std::vector<ListedPref> prefs;
};

Value ToValue(const ListedPref& pref) {
  return Value::Object{
      {"key", pref.key},           {"type", pref.type},
      {"value", pref.value},       {"valid", pref.is_valid},
      {"default", pref.otherwise}, {"source", NameOf(pref.source)},
      {"known", IsKnown(pref)},    {"entries", static_cast<std::uint64_t>(pref.entries)}};
}

Value ToValue(const ListedFile& file) {
  Value::Array settings;
  for (const ListedPref& pref : file.prefs) settings.push_back(ToValue(pref));
  return Value::Object{{"path", file.view.path()},
                       {"state", NameOf(file.view.state())},
                       {"locked", file.is_locked},
                       {"wiped", file.is_wiped},
                       {"settings", std::move(settings)}};
}

// A map is told by its size.
std::string Summary(const Value& value) {
  if (const auto* object = std::get_if<Value::Object>(&value.content())) {
    const std::size_t count = object->size();
    if (count == 1) return "1 entry";
    return (count == 0 ? "no" : std::to_string(count)) + " entries";
  }
  return ToText(value);
}

std::string Remarks(const ListedPref& pref) {
  std::string remarks = NameOf(pref.source);
  if (!IsKnown(pref)) {
    remarks += "; unknown key";
  } else if (pref.source != Source::kDefault) {
    remarks += "; default " + Summary(pref.otherwise);
  }
  if (!pref.is_valid) remarks += "; not of type " + pref.type;
  if (pref.entries > 1) {
    remarks += "; stands " + std::to_string(pref.entries) + " times, and the first counts";
  }
  return remarks;
}

Tone ToneOf(const ListedPref& pref) {
  if (!pref.is_valid) return Tone::kBad;
  if (!IsKnown(pref) || pref.entries > 1) return Tone::kNote;
  return pref.source == Source::kDefault ? Tone::kPlain : Tone::kGood;
}

void AddPref(Page& page, const ListedPref& pref) {
  page.AddRow(pref.key, ToneOf(pref), Summary(pref.value) + " (" + Remarks(pref) + ")");
  const auto* const entries = std::get_if<Value::Object>(&pref.value.content());
  if (entries == nullptr) return;
  for (const auto& [key, value] : *entries) page.AddDetail("\"" + key + "\" = " + Summary(value));
}

void AddFile(Page& page, const ListedFile& file) {
  page.AddTitle(std::string(file.title) + ": " + file.view.path().value_or("no path") + " (" +
                Describe(file.view.state()) + ")");
  if (file.is_locked) {
    page.AddVerbatim("The file is locked: a run that begins now reads none of these.");
  }
  if (file.is_wiped) page.AddVerbatim("An uninstall stamp makes the next run remove this file.");
  for (const ListedPref& pref : file.prefs) AddPref(page, pref);
}

}  // namespace

Answer ShowPrefs(const std::optional<std::string>& key) {
  const PrefsView user_view(esd::GetUpdaterPrefsFile(esd::kPrefsFileName));
  const PrefsView admin_view(esd::GetAdminPrefsFile());
  UserSettings user(user_view);
  Settings admin(admin_view, Source::kAdministrator);
  const bool is_admin_locked = admin_view.path() && IsPrefsLockHeld(*admin_view.path());
  const ListedFile files[] = {{"Preferences", user_view, user.is_locked, user.is_wiped,
                               ListPrefs(UserSchema(), user_view, user.settings, key)},
                              {"Administrator's preferences", admin_view, is_admin_locked, false,
                               ListPrefs(AdministratorSchema(), admin_view, admin, key)}};
  Answer answer;
  bool is_found = false;
  for (const ListedFile& file : files) {
    if (key && file.prefs.empty()) continue;
    AddFile(answer.page, file);
    is_found = true;
  }
  if (!is_found) {
    answer.status = kProblem;
    answer.complaint = *key + " is unknown, and stands in neither file";
  }
  answer.json = WithVersion(
      {{"preferences", ToValue(files[0])}, {"administrator_preferences", ToValue(files[1])}});
  return answer;
}

}  // namespace ctl
