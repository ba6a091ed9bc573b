#include "ctl/prefs_view.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "esd/prefs/resource_locker.h"
#include "esd/prefs/updater_prefs.h"
#include "platform/file_descriptor.h"
#include "platform/file_type.h"

namespace ctl {
namespace {

struct StateTexts {
  const char* name;
  const char* description;
};

// By the number of the enumerator.
constexpr StateTexts kStateTexts[] = {
    {"no-folder", "there is no folder for it"},
    {"missing", "missing: every key has its default"},
    {"not-a-file", "not a file: every key has its default"},
    {"unreadable", "unreadable: every key has its default"},
    {"empty", "empty: every key has its default"},
    {"malformed", "malformed: every key has its default, and nothing can be saved"},
    {"no-root", "without preferences: every key has its default"},
    {"loaded", "loaded"},
};

}  // namespace

const char* NameOf(PrefsState state) { return kStateTexts[static_cast<unsigned>(state)].name; }

const char* Describe(PrefsState state) {
  return kStateTexts[static_cast<unsigned>(state)].description;
}

PrefsView::PrefsView(std::optional<std::string> path)
    : path_(std::move(path)),
      builder_(std::make_unique<esd::ExpatDOMBuilder<esd::XMLDocumentNode>>()) {
  state_ = Load();
  // A program that does not replace the file whole may have been writing it.
  if (state_ == PrefsState::kMalformed) state_ = Load();
}

PrefsState PrefsView::Load() {
  if (!path_) return PrefsState::kNoFolder;
  builder_->Create(nullptr, nullptr);
  if (platform::IsOtherThanFile(*path_)) return PrefsState::kNotAFile;
  const platform::FileDescriptor file = platform::OpenRegularFile(*path_);
  if (!file && (errno == ENOENT || errno == ENOTDIR)) return PrefsState::kMissing;
  const bool is_parsed = file && builder_->ParseFile(file, true);
  if (!is_parsed && !builder_->is_malformed()) {
    error_ = std::strerror(errno);
    return PrefsState::kUnreadable;
  }
  fault_ = is_parsed ? std::nullopt : std::optional(builder_->fault());
  if (!is_parsed) return PrefsState::kMalformed;
  root_ = esd::FindPrefsRoot(builder_->GetRoot(), esd::kPrefsRootName);
  if (root_ != nullptr) return PrefsState::kLoaded;
  return builder_->GetRoot()->children().empty() ? PrefsState::kEmpty : PrefsState::kNoRoot;
}

bool IsPrefsLockHeld(const std::string& path) {
  constexpr int kLooks = 100;
  constexpr useconds_t kPause = 10'000;
  for (int look = 0; look < kLooks; ++look) {
    if (!esd::ResourceLocker::IsTaken(path)) return false;
    usleep(kPause);
  }
  return true;
}

}  // namespace ctl
