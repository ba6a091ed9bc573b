// The client library as the launcher holds it: loaded at most once at a time, and closed at the
// end.
#ifndef LAUNCHER_CLIENT_LIBRARY_H_
#define LAUNCHER_CLIENT_LIBRARY_H_

#include <dlfcn.h>

#include "welko/native_library.h"

namespace wakerly {

/// Adds to the loader's wrapper what its owner has to do: closing the library.
class ClientLibrary : public welko::NativeLibrary {
 public:
  ClientLibrary() = default;
  /// Closes a library that is still loaded.
  ~ClientLibrary() {
    if (IsLoaded()) dlclose(handle());
    ForgetHandle();
  }
  ClientLibrary(const ClientLibrary&) = delete;
  ClientLibrary& operator=(const ClientLibrary&) = delete;

  /// Whether a library is loaded.
  bool IsLoaded() const { return handle() != nullptr; }

  /// Closes the library, which must be loaded. It still counts as loaded when that fails.
  void Unload() {
    if (dlclose(handle()) == 0) ForgetHandle();
  }
};

}  // namespace wakerly

#endif  // LAUNCHER_CLIENT_LIBRARY_H_
