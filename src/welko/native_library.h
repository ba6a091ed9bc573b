// A thin wrapper over the dynamic loader, and two conversions beside it.
#ifndef WELKO_NATIVE_LIBRARY_H_
#define WELKO_NATIVE_LIBRARY_H_

#include <string>

namespace welko {

/// At most one loaded library. Never unloads: its owner closes the handle.
class NativeLibrary {
 public:
  /// Loads the library at `path` with dlopen(3), all symbols bound at once. True at once, whatever
  /// the path, when a library is loaded already. A failure goes to the support log and leaves none
  /// loaded.
  bool Load(const std::string& path);

  /// The address of the symbol `name`; null when it is missing or no library is loaded.
  void* GetSymbol(const char* name) const;

  /// The loader's handle, null while no library is loaded. The embedding object closes it with
  /// dlclose(3) and then forgets it.
  void* handle() const { return handle_; }
  /// Takes the library for unloaded, so that Load loads again. Closes nothing.
  void ForgetHandle() { handle_ = nullptr; }

 private:
  void* handle_ = nullptr;
};

/// Copies `in` to `out`. Always true.
bool ToString(const std::string& in, std::string& out);
/// Gives `value` as decimal text in `out`. Always true.
bool ToString(long long value, std::string& out);

}  // namespace welko

#endif  // WELKO_NATIVE_LIBRARY_H_
