// Whether the folders that hold the preferences are there, and the user's own.
#ifndef CTL_FOLDER_CHECKS_H_
#define CTL_FOLDER_CHECKS_H_

#include "ctl/check.h"

namespace ctl {

/// Adds what is found about the home folder and the folder of the preferences.
void CheckFolders(Checks& checks);

}  // namespace ctl

#endif  // CTL_FOLDER_CHECKS_H_
