#include "welko/native_library.h"

#include <dlfcn.h>

#include "platform/file_type.h"
#include "welko/log_level.h"
#include "welko/support_log.h"

namespace welko {
namespace {

void ReportLoadFailure(const char* path, const char* error) {
  constexpr const char* kModule = "NativeLibrary";
  constexpr const char* kFormat = "Unable to load library at path: %s. Error: %s";
  if (g_support_log_hook != nullptr) {
    g_support_log_hook(kLogWarn, "WelkoUtils", kModule, "", "", kFormat, path, error);
  } else if (g_support_log_sink != nullptr) {
    g_support_log_sink->Log(kLogWarn, "", kModule, kFormat, path, error);
  }
}

}  // namespace

bool NativeLibrary::Load(const std::string& path) {
  if (handle_ != nullptr) return true;
  if (platform::IsOtherThanFile(path)) {
    ReportLoadFailure(path.c_str(), "not a file");
    return false;
  }
  handle_ = dlopen(path.c_str(), RTLD_NOW);
  if (handle_ == nullptr) ReportLoadFailure(path.c_str(), dlerror());
  return handle_ != nullptr;
}

void* NativeLibrary::GetSymbol(const char* name) const {
  return handle_ != nullptr ? dlsym(handle_, name) : nullptr;
}

bool ToString(const std::string& in, std::string& out) {
  out = in;
  return true;
}

bool ToString(long long value, std::string& out) {
  out = std::to_string(value);
  return true;
}

}  // namespace welko
