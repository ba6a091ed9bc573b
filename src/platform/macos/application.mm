#include "platform/application.h"

#import <CoreServices/CoreServices.h>

#include <optional>

namespace platform {
namespace {

std::optional<FSRef> Resolve(const std::string& path) {
  FSRef item;
  const auto* text = reinterpret_cast<const UInt8*>(path.c_str());
  if (FSPathMakeRef(text, &item, nullptr) != noErr) return std::nullopt;
  return item;
}

bool Open(const FSRef& application) {
  LSApplicationParameters parameters = {};
  parameters.version = 0;
  parameters.flags = kLSLaunchDefaults | kLSLaunchAsync | kLSLaunchNewInstance;
  parameters.application = &application;
  return LSOpenApplication(&parameters, nullptr) == noErr;
}

// The ".app" folder that holds `path` in its Contents/MacOS; empty when there is none.
std::string BundleOf(const std::string& path) {
  const std::string bundle = path.substr(0, path.rfind("/Contents/MacOS/"));
  return bundle != path && bundle.ends_with(".app") ? bundle : std::string();
}

}  // namespace

// Launch Services may refuse an executable and take its bundle.
bool LaunchApplication(const std::string& path) {
  @autoreleasepool {
    const std::optional<FSRef> application = Resolve(path);
    if (!application) return false;
    if (Open(*application)) return true;
    const std::string bundle = BundleOf(path);
    const std::optional<FSRef> folder = bundle.empty() ? std::nullopt : Resolve(bundle);
    return folder && Open(*folder);
  }
}

}  // namespace platform
