// Starting another application.
#ifndef PLATFORM_APPLICATION_H_
#define PLATFORM_APPLICATION_H_

#include <string>

namespace platform {

/// Starts a new instance of the application at `path` and does not wait for it: it runs on its own
/// and outlives the caller. An executable in a bundle's Contents/MacOS that the system refuses, as
/// macOS may, is started by its bundle. False when the path does not resolve or the system could
/// not start it.
bool LaunchApplication(const std::string& path);

}  // namespace platform

#endif  // PLATFORM_APPLICATION_H_
