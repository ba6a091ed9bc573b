// A preference file of any bytes: read, changed in one entry, saved and read again. Every other
// entry is still there with its value, understood or not. A malformed file stays as it is, or gives
// way to an empty one where there is a lock.
#include <map>
#include <sstream>

#include "esd/prefs/map_pref.h"
#include "esd/prefs/prefs_writer.h"
#include "fuzz/document.h"
#include "fuzz/fuzz.h"

namespace {

using esd::PrefsWriter;
using std::string;

constexpr const char* kRoot = "Preferences";
constexpr const char* kKey = "StartupLogFile";
constexpr const char* kValue = " <\"a&b\">'\xC3\xA9\n ";

struct MemoryLock : esd::LockPolicyInterface {
  bool Lock() override { return held = true; }
  bool Unlock(bool /*force*/) override { return !(held = false); }
  bool IsLocked() override { return held; }
  bool held = false;
};

template <typename T>
void Read(std::ostream& out, PrefsWriter& store, const string& key, const T& otherwise) {
  T value{};
  out << store.GetPref(key, value, otherwise) << value << '\n';
}

template <typename V>
void ReadMap(std::ostream& out, PrefsWriter& store, const string& key) {
  esd::MapPref<string, V> pref(key);
  pref.SetStore(&store);
  std::map<string, V> values;
  out << pref.Get(values) << '\n';
  for (const auto& [name, value] : values) out << name << '\n' << value << '\n';
}

bool IsLeaf(const std::unique_ptr<fuzz::Node>& node) { return node->children().empty(); }

// What the typed reads make of the entries but `kKey`. Where an empty text stands before elements,
// a save puts a newline, so that an entry with elements is read as a map alone.
string ReadEntries(PrefsWriter& store, const fuzz::Node& root) {
  std::ostringstream out;
  for (std::size_t i = 0; i < std::min<std::size_t>(root.children().size(), 8); ++i) {
    const string key = root.children()[i]->GetName();
    const auto& parts = store.GetPrefsNode(key, false)->children();
    if (key == kKey || !std::all_of(parts.begin(), parts.end(), IsLeaf)) continue;
    ReadMap<bool>(out, store, key);
    ReadMap<string>(out, store, key);
    if (!parts.empty()) continue;
    Read(out, store, key, true);
    Read(out, store, key, -1);
    Read(out, store, key, 9UL);
    Read<string>(out, store, key, "none");
  }
  return out.str();
}

void CheckMalformed(const string& file, std::string_view input) {
  PrefsWriter unlocked(file, kRoot);
  CHECK(!unlocked.SetPref<string>(kKey, kValue));
  CHECK(fuzz::ReadFile(file) == input);

  MemoryLock lock;
  PrefsWriter locked("", kRoot);
  locked.SetLockPolicy(&lock);
  locked.SetPrefsPath(file);
  CHECK(!std::filesystem::exists(file) && !lock.held);
  CHECK(locked.SetPref<string>(kKey, kValue) && !lock.held);
}

// Sets `kKey` as the store is to do it.
void SetInTree(fuzz::Node& root) {
  const auto& entries = root.children();
  auto entry = std::find_if(entries.begin(), entries.end(),
                            [](const auto& node) { return node->GetName() == kKey; });
  if (entry == entries.end()) {
    root.AddChild(new fuzz::Node(kKey));
    entry = entries.end() - 1;
  }
  (*entry)->SetData(kValue);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  static const string file = folder.path() / "prefs";
  const std::string_view input = fuzz::Text(data, size);
  if (fuzz::MayDeclareEntity(input)) return 0;
  fuzz::WriteFile(file, input);

  fuzz::Builder expected;
  CHECK(expected.Create(nullptr, nullptr));
  if (!expected.ParseFile(file, true)) {
    CheckMalformed(file, input);
    return 0;
  }
  PrefsWriter store(file, kRoot);
  fuzz::Node& document = *expected.GetRoot();
  if (document.children().empty()) document.AddChild(new fuzz::Node(kRoot));
  fuzz::Node& root = *document.children().front();
  const bool ours = root.GetName() == kRoot;
  const string values = ours ? ReadEntries(store, root) : "";
  CHECK(store.SetPref<string>(kKey, kValue));
  if (!fuzz::ReadsBack(document)) return 0;

  // Behind another program's root stands now a second one, which a parser takes for an error.
  fuzz::Builder saved;
  CHECK(saved.Create(nullptr, nullptr) && saved.ParseFile(file, true) == ours);
  if (ours) SetInTree(root);
  CHECK(fuzz::SameWhenSaved(root, *saved.GetRoot()->children().front()));
  if (!ours) return 0;
  PrefsWriter again(file, kRoot);
  CHECK(ReadEntries(again, root) == values);
  string value;
  CHECK(again.GetPref<string>(kKey, value, "") && value == kValue);
  return 0;
}
