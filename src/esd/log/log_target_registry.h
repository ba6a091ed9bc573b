// The process-wide registry of log targets by name.
//
// It has no lock of its own: one thread registers and writes.
#ifndef ESD_LOG_LOG_TARGET_REGISTRY_H_
#define ESD_LOG_LOG_TARGET_REGISTRY_H_

#include <cstdarg>
#include <cstdint>

#include "welko/log_target_base.h"

namespace esd {

/// Opens `target` and adds it to those under its name, once. False, with nothing added, when it is
/// null or does not open. The registry does not own targets: they live as long as the process.
bool RegisterLogTarget(welko::LogTargetBase* target);

/// Hands one line to every target registered under `name`, in the order of registration, under the
/// targets' own locks. Nothing happens for a null or unknown name. The parameters are those of
/// LogTargetBase::Log.
void WriteToTargets(const char* name, int level, const welko::LogContext& context,
                    const char* format, std::va_list* arguments, std::int64_t time_ms);

}  // namespace esd

#endif  // ESD_LOG_LOG_TARGET_REGISTRY_H_
