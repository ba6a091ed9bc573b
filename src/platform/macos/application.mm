#include "platform/application.h"

#import <CoreServices/CoreServices.h>

namespace platform {

bool LaunchApplication(const std::string& path) {
  FSRef application;
  if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &application, nullptr) != noErr) {
    return false;
  }
  LSApplicationParameters parameters = {};
  parameters.version = 0;
  parameters.flags = kLSLaunchDefaults | kLSLaunchAsync | kLSLaunchNewInstance;
  parameters.application = &application;
  return LSOpenApplication(&parameters, nullptr) == noErr;
}

}  // namespace platform
