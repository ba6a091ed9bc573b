#include "welko/support_log.h"

namespace welko {

SupportLogHook* g_support_log_hook = nullptr;
SupportLogSink* g_support_log_sink = nullptr;

}  // namespace welko
