// `wakerlyctl ids`: every identifier with its meaning.
#ifndef CTL_IDS_H_
#define CTL_IDS_H_

#include "ctl/answer.h"

namespace ctl {

Answer ListIdentifiers();

}  // namespace ctl

#endif  // CTL_IDS_H_
