#include "esd/prefs/prefs_writer.h"

#include <functional>
#include <iterator>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "esd/prefs/prefs_lock.h"
#include "esd/util/change_diff_type.h"
#include "esd/util/delete_path.h"
#include "esd/util/file_info.h"
#include "esd/util/file_stream.h"
#include "esd/xml/xml_search.h"
#include "esd/xml/xml_writer.h"

namespace esd {
namespace {

using ElementNamed = NodeName_t<std::string, std::equal_to<std::string>>;

// The bytes of a file, or nothing when it cannot be read.
std::optional<std::string> ReadBytes(const std::string& path) {
  ESDifstream file(path, "rb");
  std::ifstream& stream = *file.stream();
  const std::streamoff size = stream.tellg();
  if (size < 0) return std::nullopt;
  std::string bytes(static_cast<std::size_t>(size), '\0');
  stream.seekg(0).read(bytes.data(), size);
  return stream ? std::optional(std::move(bytes)) : std::nullopt;
}

// Creates or truncates a file. Nothing when it cannot be opened, else whether every byte was
// written.
std::optional<bool> WriteBytes(const std::string& path, const std::string& bytes) {
  ESDofstream file(path, "wb");
  if (!file.stream()->is_open()) return std::nullopt;
  *file.stream() << bytes << std::flush;
  file.stream()->close();
  return file.stream()->good();
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
  prefs_path_ = path;
  root_ = nullptr;
  const bool created = builder_.Create(nullptr, nullptr);
  if (path.empty()) throw std::runtime_error("Prefs file unable to lock file for reading!");
  if (!created) return;
  if (builder_.ParseFile(path, true)) {
    AdoptDocument();
  } else if (lock.took()) {
    DeletePath(path);
    EmptyDOM();
  }
}

// Makes the element of the right name the root of a document that was read.
void PrefsWriter::AdoptDocument() {
  const auto found = SearchResult(builder_.GetRoot()).Children(ElementNamed(root_name_));
  if (found.nodes().empty()) {
    AddRoot();
  } else {
    root_ = found.nodes().front();
    GetModificationStamp(prefs_path_, last_modification_time_);
  }
}

void PrefsWriter::AddRoot() {
  auto* const root = new XMLDocumentNode(root_name_);
  builder_.GetRoot()->AddChild(root);
  root_ = root;
}

bool PrefsWriter::RefreshIfModified() {
  std::uint64_t stamp = 0;
  if (GetModificationStamp(prefs_path_, stamp)) {
    if (last_modification_time_ < stamp) SetPrefsPath(prefs_path_);
  } else if (last_modification_time_ != 0) {
    EmptyDOM();
    last_modification_time_ = 0;
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
  if (!DeletePath(prefs_path_)) {
    lock.Keep();
    return false;
  }
  SetPrefsPath(prefs_path_);
  return true;
}

XMLDocumentNode* PrefsWriter::GetPrefsNode(const std::string& key, bool create) {
  if (root_ == nullptr) return nullptr;
  for (const auto& entry : root_->children()) {
    if (entry->GetName() == key) return entry.get();
  }
  if (!create) return nullptr;
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

template <typename T>
bool PrefsWriter::GetPref(const std::string& key, T& out, const T& otherwise) {
  const PrefsLock lock(*this);
  if (!lock.held()) return false;
  const XMLDocumentNode* const entry = GetPrefsNode(key, false);
  const std::string text = entry != nullptr ? entry->GetData() : "";
  if (text.empty()) {
    out = otherwise;
    return true;
  }
  if constexpr (std::is_same_v<T, std::string>) {
    out = text;
    return true;
  } else {
    return ChangeDiffTypeImpl<std::string, T>::ChangeType(text, out);
  }
}

template <typename T>
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
  if (!lock.held() || root_ == nullptr) return false;
  // The text is made first, so that the file is empty for as short a time as possible.
  std::ostringstream text;
  WriteXMLNode(text, *builder_.GetRoot());
  return ReplaceFile(std::move(text).str()) && lock.Release();
}

bool PrefsWriter::ReplaceFile(const std::string& text) {
  const bool existed = ObjectExistsAtPath(prefs_path_);
  const std::optional<std::string> former = existed ? ReadBytes(prefs_path_) : std::nullopt;
  const std::optional<bool> written = WriteBytes(prefs_path_, text);
  if (!written) return false;
  if (!*written && former) WriteBytes(prefs_path_, *former);
  if (!*written && !existed) DeletePath(prefs_path_);
  // Bytes that were put back are no news either: the document keeps its change.
  KeepStamp();
  return *written;
}

// Remembers the file's time, which must not be one that another process may have loaded the file
// with: two saves can fall into one tick of the clock, and the clock can be set back.
void PrefsWriter::KeepStamp() {
  constexpr std::uint64_t kSecond = 1'000'000'000;
  const std::uint64_t next_second = (last_modification_time_ / kSecond + 1) * kSecond;
  std::uint64_t stamp = 0;
  // Some file systems keep nothing finer than a second.
  for (const std::uint64_t newer : {last_modification_time_ + 1, next_second}) {
    if (!GetModificationStamp(prefs_path_, stamp) || stamp > last_modification_time_) break;
    SetModificationStamp(prefs_path_, newer);
  }
  GetModificationStamp(prefs_path_, last_modification_time_);
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
