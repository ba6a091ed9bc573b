// A preference file as a store of typed values by key.
//
// The file is an XML document with one element per key below the root. It is kept in memory, read
// again whenever the file is newer, and written whole at every change. Other processes may share
// the file: each operation runs under the store's lock, when it has one.
#ifndef ESD_PREFS_PREFS_WRITER_H_
#define ESD_PREFS_PREFS_WRITER_H_

#include <memory>
#include <optional>
#include <string>

#include "esd/prefs/lock_policy.h"
#include "esd/prefs/prefs_document.h"
#include "esd/prefs/prefs_file.h"
#include "esd/xml/expat_dom_builder.h"
#include "esd/xml/xml_document_node.h"

namespace esd {

/// One thread uses a store. Reads and writes give false, and do nothing, when the lock cannot be
/// had.
class PrefsWriter {
 public:
  /// A store with the root element `rootName`, loaded from `path` unless that is empty.
  PrefsWriter(const std::string& path, const std::string& rootName);
  /// Destroys the document; the file and the lock stay as they are.
  virtual ~PrefsWriter();
  PrefsWriter(const PrefsWriter&) = delete;
  PrefsWriter& operator=(const PrefsWriter&) = delete;

  /// Uses `policy`, which stays the caller's and must outlive its use here; null for no lock.
  /// Nothing changes while the present policy holds its lock.
  void SetLockPolicy(LockPolicyInterface* policy);
  /// The policy in use; null for none.
  LockPolicyInterface* lock_policy() const { return lock_policy_; }

  /// Points the store at the file `path` and loads it. A missing or empty file, and one that holds
  /// no root element of the right name, give an empty store. A malformed file is removed and gives
  /// an empty store when this call took the lock; otherwise, and when reading or memory fails, the
  /// store stays without a root, so that reads give defaults and writes fail. A document that was
  /// loaded from the same path stays when the file can be neither opened nor found missing; writes
  /// fail then. Throws std::runtime_error for an empty path.
  void SetPrefsPath(const std::string& path);
  /// Loads the file again when it is newer than the document, or another one; empties the document
  /// when the file that it was loaded from is gone. A document that was loaded stays when the file
  /// cannot be looked at; writes fail then. Always true.
  bool RefreshIfModified();
  /// Takes the lock, when there is one and it is not held, and refreshes the document. The caller
  /// gives the lock back; better let a PrefsLock do both.
  bool LockPrefs();
  /// Makes the document one that holds the root element alone. The file stays as it is.
  void EmptyDOM();
  /// Removes the file and all entries. When the file cannot be removed, the lock stays held.
  bool DeleteAllPrefs();

  /// The first entry called `key`; the tree owns it. Null when there is none, unless `create` makes
  /// it. Takes no lock.
  XMLDocumentNode* GetPrefsNode(const std::string& key, bool create);
  /// Gives the entry called `key` in `node`; false, and null there, when there is none. The tree
  /// owns it, and destroys it when the store loads its file anew, which every operation here may
  /// do unless the caller holds the lock.
  bool GetPref(const std::string& key, XMLDocumentNode*& node);
  /// Removes the entry called `key`, when there is one, puts `node` at the end of all entries under
  /// its own name, and saves. On false the document may have changed all the same.
  bool SetPref(const std::string& key, std::unique_ptr<XMLDocumentNode> node);

  /// Gives in `out` the value of the entry called `key`, `otherwise` when it is missing or empty.
  /// False, and `out` untouched, for text that is no T.
  template <PrefValue T>
  bool GetPref(const std::string& key, T& out, const T& otherwise);
  /// Sets the entry called `key`, a new one at the end of all entries, and saves. On false the
  /// document may have changed, the file has not.
  template <PrefValue T>
  bool SetPref(const std::string& key, const T& value);

  /// Makes the document the content of the file (ReplaceFile). When that fails, file and document
  /// stay as they are. False also without a loaded document, when memory does not suffice, and when
  /// the lock cannot be given back afterwards.
  bool Save();

 private:
  void Load(const platform::FileDescriptor& file, bool may_remove);
  void AdoptDocument(const std::optional<platform::FileStamp>& stamp);
  void AddRoot();

  ExpatDOMBuilder<XMLDocumentNode> builder_;
  XMLDocumentNode* root_ = nullptr;  ///< owned by the builder; null when no document is loaded
  std::string prefs_path_;
  const std::string root_name_;
  LockPolicyInterface* lock_policy_ = nullptr;  ///< not owned
  PrefsFile file_;             ///< as last loaded or saved, its modification time above all
  bool is_up_to_date_ = true;  ///< false when the last look at the file was refused
};

}  // namespace esd

#endif  // ESD_PREFS_PREFS_WRITER_H_
