// Whether this process makes the folders that it looks for and does not find.
#ifndef PLATFORM_FOLDER_MAKING_H_
#define PLATFORM_FOLDER_MAKING_H_

#include <string>

namespace platform {

/// From here on, look-ups that make a missing folder make none in this process: they answer as if
/// they had where CouldMakeFolder says so. For a program that only looks, before its first look-up:
/// as a property of the process, no look-up can forget it.
void OnlyPretendToMakeFolders();

/// Whether look-ups make missing folders; true until OnlyPretendToMakeFolders.
bool MakesFolders();

/// Whether a folder stands at `path`, links followed, or the process's effective user could make
/// one together with its missing ancestors. Nothing is made.
bool CouldMakeFolder(std::string path);

}  // namespace platform

#endif  // PLATFORM_FOLDER_MAKING_H_
