// A preference file as it is, read without a lock and without a change to anything.
#ifndef CTL_PREFS_VIEW_H_
#define CTL_PREFS_VIEW_H_

#include <memory>
#include <optional>
#include <string>

#include "esd/prefs/prefs_document.h"
#include "esd/xml/expat_dom_builder.h"
#include "esd/xml/xml_document_node.h"

namespace ctl {

/// What a look at the file found. In every state but kLoaded each key has its default.
enum class PrefsState {
  kNoFolder,    ///< there is no folder for it
  kMissing,     ///< there is no file
  kNotAFile,    ///< a folder, FIFO, socket or device stands there
  kUnreadable,  ///< it may not be read, or reading fails
  kEmpty,       ///< it has no byte
  kMalformed,   ///< it is no well-formed XML
  kNoRoot,      ///< it is XML, without the root element of preferences
  kLoaded,      ///< it holds preferences
};

/// The name of `state` for scripts, such as "no-folder", and what it says in a few words.
///@{
const char* NameOf(PrefsState state);
const char* Describe(PrefsState state);
///@}

/// Saves replace the file whole, so that a reader needs no lock.
class PrefsView {
 public:
  /// Reads the file `path`, a second time where it does not parse; nothing stands for no folder.
  explicit PrefsView(std::optional<std::string> path);

  const std::optional<std::string>& path() const { return path_; }
  PrefsState state() const { return state_; }
  /// What the system says, where the state is kUnreadable.
  const std::string& error() const { return error_; }
  /// Where and why the parser gave up, where the state is kMalformed.
  const std::optional<esd::XmlFault>& fault() const { return fault_; }
  /// The document; null unless it was parsed.
  const esd::XMLDocumentNode* document() const { return builder_->GetRoot(); }
  /// The root element, whose children are the entries; null unless the state is kLoaded.
  const esd::XMLDocumentNode* root() const { return root_; }
  /// The first entry called `key`; null for none.
  const esd::XMLDocumentNode* FindEntry(const std::string& key) const {
    return esd::FindPrefsEntry(root_, key);
  }

 private:
  PrefsState Load();

  std::optional<std::string> path_;
  std::unique_ptr<esd::ExpatDOMBuilder<esd::XMLDocumentNode>> builder_;
  const esd::XMLDocumentNode* root_ = nullptr;  ///< owned by the builder
  PrefsState state_ = PrefsState::kNoFolder;
  std::string error_;
  std::optional<esd::XmlFault> fault_;
};

/// Whether the lock on the preference file `path` is held: whether its semaphore stands all through
/// the time, about a second, in which a run tries for it.
bool IsPrefsLockHeld(const std::string& path);

}  // namespace ctl

#endif  // CTL_PREFS_VIEW_H_
