// A function of a shared library that is loaded only when it is called.
//
// Linking libsystemd and libplist doubled the time of an empty run, and most runs need neither: no
// seat to ask about, no property list to read.
#ifndef PLATFORM_LINUX_LATE_LIBRARY_H_
#define PLATFORM_LINUX_LATE_LIBRARY_H_

#include <dlfcn.h>

namespace platform {

/// `name` of the library `soname` as a function of type `Function`; null when either is missing.
/// The library stays loaded until the process ends. With dlopen(3).
template <typename Function>
Function* LateFunction(const char* soname, const char* name) {
  void* library = dlopen(soname, RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) return nullptr;
  return reinterpret_cast<Function*>(dlsym(library, name));
}

}  // namespace platform

#endif  // PLATFORM_LINUX_LATE_LIBRARY_H_
