// The hooks through which the host of the support library may receive its messages. Both are unset
// unless the host sets them; then messages go nowhere.
#ifndef WELKO_SUPPORT_LOG_H_
#define WELKO_SUPPORT_LOG_H_

namespace welko {

/// A log callback: level, logger name, module name, source file, function, then a printf(3) format
/// with its arguments.
using SupportLogHook = void(int level, const char* logger, const char* module, const char* file,
                            const char* function, const char* format, ...);

/// A logger object. The host owns it and keeps it alive while it is set.
class SupportLogSink {
 public:
  virtual ~SupportLogSink() = default;
  /// Takes one message: a printf(3) format with its arguments. Called on the thread that logs.
  virtual void Log(int level, const char* file, const char* module, const char* format, ...) = 0;
};

/// Process-wide, not owned, and set before any other thread logs. The sink is used only while there
/// is no hook.
///@{
extern SupportLogHook* g_support_log_hook;
extern SupportLogSink* g_support_log_sink;
///@}

}  // namespace welko

#endif  // WELKO_SUPPORT_LOG_H_
