#include "esd/prefs/prefs_writer.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "esd/prefs/prefs_document.h"
#include "esd/prefs/prefs_lock.h"
#include "esd/util/change_diff_type.h"
#include "esd/util/delete_path.h"
#include "esd/util/replace_file.h"
#include "esd/xml/xml_writer.h"
#include "platform/file_descriptor.h"

namespace esd {
namespace {

// Whether an open(2) that failed so tells for good that there is nothing to read. Anything else,
// such as too many open files, may be over soon, and the file may hold what must not be lost.
bool IsUnreadable(int error) {
  constexpr int kForGood[] = {ENOENT, ENOTDIR, EACCES, EPERM, EISDIR, ELOOP, ENAMETOOLONG};
  return std::find(std::begin(kForGood), std::end(kForGood), error) != std::end(kForGood);
}

}  // namespace

PrefsWriter::PrefsWriter(const std::string& path, const std::string& rootName)
    : root_name_(rootName) {
  if (!path.empty()) SetPrefsPath(path);
}

PrefsWriter::~PrefsWriter() = default;

void PrefsWriter::SetLockPolicy(LockPolicyInterface* policy) {
  if (lock_policy_ == nullptr || !lock_policy_->IsLocked()) lock_policy_ = policy;
}

void PrefsWriter::SetPrefsPath(const std::string& path) {
  const PrefsLock lock(*this);
  if (!lock.held()) return;
  const bool is_reload = path == prefs_path_ && root_ != nullptr;
  if (path != prefs_path_) file_.Forget();
  prefs_path_ = path;
  const platform::FileDescriptor file = platform::OpenRegularFile(path);
  const int error = file ? 0 : errno;
  is_up_to_date_ = !is_reload || error == 0 || error == ENOENT || error == ENOTDIR;
  if (!is_up_to_date_) return;
  root_ = nullptr;
  const bool created = builder_.Create(nullptr, nullptr);
  if (path.empty()) throw std::runtime_error("Prefs file unable to lock file for reading!");
  if (!created || !(file || IsUnreadable(error))) return;
  Load(file, lock.took());
}

// Leaves the store without a root where the file cannot be read whole.
void PrefsWriter::Load(const platform::FileDescriptor& file, bool may_remove) {
  try {
    // Before the content is read: what is saved meanwhile must look newer.
    const auto stamp = file ? platform::StampOf(file.number()) : std::nullopt;
    if (builder_.ParseFile(file, true)) {
      AdoptDocument(stamp);
    } else if (may_remove && builder_.is_malformed()) {
      DeleteFile(prefs_path_);
      EmptyDOM();
    }
  } catch (const std::bad_alloc&) {
    root_ = nullptr;
  }
}

// Makes the element of the right name the root of a document that was read.
void PrefsWriter::AdoptDocument(const std::optional<platform::FileStamp>& stamp) {
  root_ = FindPrefsRoot(builder_.GetRoot(), root_name_);
  if (root_ == nullptr) {
    AddRoot();
  } else if (stamp) {
    file_.Remember(*stamp);
  }
}

void PrefsWriter::AddRoot() {
  auto* const root = new XMLDocumentNode(root_name_);
  builder_.GetRoot()->AddChild(root);
  root_ = root;
}

bool PrefsWriter::RefreshIfModified() {
  const bool was_loaded = file_.time() != 0;
  is_up_to_date_ = true;
  switch (file_.Look(prefs_path_)) {
    case PrefsFile::State::kChanged:
      SetPrefsPath(prefs_path_);
      break;
    case PrefsFile::State::kGone:
      if (was_loaded) EmptyDOM();
      file_.Forget();
      break;
    case PrefsFile::State::kUnknown:
      is_up_to_date_ = !was_loaded;
      break;
    case PrefsFile::State::kSame:
      break;
  }
  return true;
}

bool PrefsWriter::LockPrefs() {
  if (lock_policy_ != nullptr && !lock_policy_->IsLocked() && !lock_policy_->Lock()) return false;
  return RefreshIfModified();
}

void PrefsWriter::EmptyDOM() {
  const PrefsLock lock(*this);
  if (!lock.held()) return;
  root_ = nullptr;
  if (builder_.Create(nullptr, nullptr)) AddRoot();
}

bool PrefsWriter::DeleteAllPrefs() {
  PrefsLock lock(*this);
  if (!lock.held()) return false;
  if (!DeleteFile(prefs_path_)) {
    lock.Keep();
    return false;
  }
  SetPrefsPath(prefs_path_);
  return true;
}

XMLDocumentNode* PrefsWriter::GetPrefsNode(const std::string& key, bool create) {
  XMLDocumentNode* const found = FindPrefsEntry(root_, key);
  if (found != nullptr || root_ == nullptr || !create) return found;
  try {
    auto* const entry = new XMLDocumentNode(key);
    root_->AddChild(entry);
    return entry;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool PrefsWriter::GetPref(const std::string& key, XMLDocumentNode*& node) {
  const PrefsLock lock(*this);
  if (!lock.held()) return false;
  node = GetPrefsNode(key, false);
  return node != nullptr;
}

bool PrefsWriter::SetPref(const std::string& key, std::unique_ptr<XMLDocumentNode> node) {
  if (root_ == nullptr) return false;
  const PrefsLock lock(*this);
  // Taking the lock may have found a file that cannot be read any more.
  if (!lock.held() || root_ == nullptr) return false;
  XMLDocumentNode* const former = GetPrefsNode(key, false);
  if (former != nullptr && !root_->RemoveChild(former)) return false;
  root_->AddChild(node.release());
  return Save();
}

template <PrefValue T>
bool PrefsWriter::GetPref(const std::string& key, T& out, const T& otherwise) {
  const PrefsLock lock(*this);
  if (!lock.held()) return false;
  return ReadPrefsValue(GetPrefsNode(key, false), out, otherwise);
}

template <PrefValue T>
bool PrefsWriter::SetPref(const std::string& key, const T& value) {
  const PrefsLock lock(*this);
  if (!lock.held()) return false;
  XMLDocumentNode* const entry = GetPrefsNode(key, true);
  if (entry == nullptr) return false;
  if constexpr (std::is_same_v<T, std::string>) {
    entry->SetData(value);
  } else {
    std::string text;
    if (!ChangeDiffTypeImpl<T, std::string>::ChangeType(value, text)) return false;
    entry->SetData(text);
  }
  return Save();
}

bool PrefsWriter::Save() {
  PrefsLock lock(*this);
  if (!lock.held() || root_ == nullptr || !is_up_to_date_) return false;
  std::string text;
  try {
    text = ToXMLText(*builder_.GetRoot(), file_.size());
  } catch (const std::bad_alloc&) {
    return false;
  }
  if (lock_policy_ != nullptr) RemoveLeftovers(prefs_path_);
  return file_.Replace(prefs_path_, text) && lock.Release();
}

template bool PrefsWriter::GetPref(const std::string&, bool&, const bool&);
template bool PrefsWriter::GetPref(const std::string&, int&, const int&);
template bool PrefsWriter::GetPref(const std::string&, unsigned long&, const unsigned long&);
template bool PrefsWriter::GetPref(const std::string&, std::string&, const std::string&);
template bool PrefsWriter::SetPref(const std::string&, const bool&);
template bool PrefsWriter::SetPref(const std::string&, const int&);
template bool PrefsWriter::SetPref(const std::string&, const unsigned long&);
template bool PrefsWriter::SetPref(const std::string&, const std::string&);

}  // namespace esd
