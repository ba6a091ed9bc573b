#include "ctl/prefs_checks.h"

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "ctl/prefs_list.h"
#include "ctl/prefs_schema.h"
#include "ctl/remedy.h"
#include "ctl/settings.h"
#include "esd/prefs/updater_prefs.h"
#include "esd/xml/save_effect.h"

namespace ctl {
namespace {

using Names = std::vector<std::string>;

// What a value of the type that TypeName calls `type` has to be; every text is one of the others.
std::string Wanted(const std::string& type) {
  if (type == "boolean") return "1 or 0";
  if (type == "integer") return "a whole number";
  if (type == "unsigned") return "a whole number from 0 up";
  if (type == "boolean-map") return "a map whose entries have a key each and are 1 or 0";
  return "a map whose entries have a key each";
}

// The unknown `key`, and the known one that differs from it by case alone.
std::string Hint(const std::vector<SchemaKey>& schema, const std::string& key) {
  for (const SchemaKey& known : schema) {
    const bool is_alike = strcasecmp(known.name.c_str(), key.c_str()) == 0;
    if (is_alike) return key + " (" + known.name + " is one)";
  }
  return key;
}

// The first of `names`, and how many more there are.
std::string List(const Names& names) {
  constexpr std::size_t kShown = 10;
  std::string list;
  for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i) {
    list += (i == 0 ? std::string() : ", ") + names[i];
  }
  if (names.size() > kShown) list += " and " + std::to_string(names.size() - kShown) + " more";
  return list;
}

// One look at one file.
class Examination {
 public:
  Examination(Checks& checks, LockedFile file, const PrefsView& view)
      : checks_(checks), file_(file), view_(view) {}

  void Run();

 private:
  void Add(Grade grade, Id of_user, const std::string& finding,
           std::optional<std::string> remedy = std::nullopt) {
    checks_.push_back({grade, IdFor(of_user), finding, std::move(remedy)});
  }
  Id IdFor(Id of_user) const;
  void AddState(const std::string& path);
  void CheckRights(const std::string& path);
  void CheckEntries();
  void AddBadValue(const ListedPref& pref);
  void CheckSave();

  Checks& checks_;
  const LockedFile file_;
  const PrefsView& view_;
};

// The rows of the administrator's file follow those of the user's, in the same order.
Id Examination::IdFor(Id of_user) const {
  if (file_ == LockedFile::kUser) return of_user;
  constexpr int kDistance =
      static_cast<int>(Id::kAdminPreferencesOk) - static_cast<int>(Id::kPreferencesOk);
  return static_cast<Id>(static_cast<int>(of_user) + kDistance);
}

// What is no file with preferences.
void Examination::AddState(const std::string& path) {
  const std::string defaults = "Every key has its default.";
  switch (view_.state()) {
    case PrefsState::kMissing:
      return Add(file_ == LockedFile::kUser ? Grade::kNote : Grade::kOk, Id::kPreferencesMissing,
                 path + " is missing. " + defaults);
    case PrefsState::kNotAFile:
      return Add(Grade::kBad, Id::kPreferencesNotAFile, path + " is no file. " + defaults,
                 SetAside(path));
    case PrefsState::kUnreadable:
      return Add(Grade::kBad, Id::kPreferencesUnreadable,
                 path + " cannot be read: " + view_.error() + ". " + defaults,
                 file_ == LockedFile::kUser ? GiveToUser(path, "rw") : GiveToAll(path, "r"));
    case PrefsState::kEmpty:
      return Add(Grade::kNote, Id::kPreferencesEmpty, path + " is empty. " + defaults);
    case PrefsState::kMalformed:
      return Add(Grade::kBad, Id::kPreferencesMalformed,
                 path + " is no well-formed XML: line " + std::to_string(view_.fault()->line) +
                     ", column " + std::to_string(view_.fault()->column) + ": " +
                     view_.fault()->text + ". " + defaults +
                     " Nothing can be saved until it is mended by hand, or set aside.",
                 SetAside(path));
    default:
      return Add(Grade::kBad, Id::kPreferencesNoRoot,
                 path + " is XML without the root element " + esd::kPrefsRootName + ". " +
                     defaults + " The next save makes it malformed.",
                 SetAside(path));
  }
}

void Examination::CheckRights(const std::string& path) {
  // Only administrators have to write theirs.
  if (file_ == LockedFile::kAdministrator) return;
  if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0) return;
  const std::string why = std::strerror(errno);
  Add(Grade::kBad, Id::kPreferencesUnwritable,
      path + " cannot be written: " + why + ". Nothing is saved.", GiveToUser(path, "w"));
}

void Examination::CheckEntries() {
  const bool is_user = file_ == LockedFile::kUser;
  const std::vector<SchemaKey> schema = is_user ? UserSchema() : AdministratorSchema();
  Settings settings(view_, is_user ? Source::kUser : Source::kAdministrator);
  Names unknown;
  Names doubled;
  for (const ListedPref& pref : ListPrefs(schema, view_, settings, std::nullopt)) {
    if (!IsKnown(pref)) unknown.push_back(Hint(schema, pref.key));
    if (pref.entries > 1) doubled.push_back(pref.key);
    if (!pref.is_valid) AddBadValue(pref);
  }
  if (!unknown.empty()) {
    Add(Grade::kNote, Id::kPreferencesUnknownKey,
        "Nothing reads these keys of " + *view_.path() + ": " + List(unknown) + ".");
  }
  if (!doubled.empty()) {
    Add(Grade::kNote, Id::kPreferencesDoubledKey,
        *view_.path() + " holds these keys more than once, and the first counts: " + List(doubled) +
            ".");
  }
}

void Examination::AddBadValue(const ListedPref& pref) {
  const auto* const text = std::get_if<std::string>(&pref.value.content());
  Add(Grade::kBad, Id::kPreferencesBadValue,
      pref.key + (text != nullptr ? " is \"" + *text + "\", and" : "") + " has to be " +
          Wanted(pref.type) + ", in " + *view_.path() + ".");
}

void Examination::CheckSave() {
  const esd::SaveEffect effect = esd::EffectOfSave(*view_.document());
  if (effect == esd::SaveEffect::kNone) return;
  Names breaking;
  Names changing;
  for (const auto& entry : view_.root()->children()) {
    const esd::SaveEffect of_entry = esd::EffectOfSave(*entry);
    if (of_entry == esd::SaveEffect::kBreaks) breaking.push_back(entry->GetName());
    if (of_entry == esd::SaveEffect::kChanges) changing.push_back(entry->GetName());
  }
  if (effect == esd::SaveEffect::kBreaks) {
    Add(Grade::kBad, Id::kPreferencesBreaksOnSave,
        "The next save makes " + *view_.path() +
            " malformed, for a quote, \"<\" or \"&\" in a map's key or another attribute of: " +
            List(breaking.empty() ? Names{view_.root()->GetName()} : breaking) +
            ". Take it out, or the whole entry.");
  }
  if (effect == esd::SaveEffect::kChanges || !changing.empty()) {
    Add(Grade::kBad, Id::kPreferencesChangesOnSave,
        "The next save of " + *view_.path() + " changes the text of: " +
            List(changing.empty() ? Names{view_.root()->GetName()} : changing) +
            ". A return is read back as a line end, and a tab or line end in a map's key as a "
            "blank.");
  }
}

void Examination::Run() {
  if (!view_.path()) {
    return Add(Grade::kBad, Id::kPreferencesNoFolder,
               file_ == LockedFile::kUser
                   ? "There is no folder for the user's preferences."
                   : "The machine has no application support folder, so that the administrator's "
                     "preferences have no place.");
  }
  if (view_.state() != PrefsState::kLoaded) return AddState(*view_.path());
  const std::size_t before = checks_.size();
  CheckRights(*view_.path());
  CheckEntries();
  CheckSave();
  if (checks_.size() != before) return;
  Add(Grade::kOk, Id::kPreferencesOk, *view_.path() + " is in order.");
}

}  // namespace

void CheckPrefs(Checks& checks, LockedFile file, const PrefsView& view) {
  Examination(checks, file, view).Run();
}

}  // namespace ctl
