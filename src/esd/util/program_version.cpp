#include "esd/util/program_version.h"

namespace esd {

const char* ProgramVersion() { return WAKERLY_VERSION; }

}  // namespace esd
