#include "esd/log/log_target_registry.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace esd {
namespace {

std::map<std::string, std::vector<welko::LogTargetBase*>>& Registry() {
  static std::map<std::string, std::vector<welko::LogTargetBase*>> registry;
  return registry;
}

}  // namespace

bool RegisterLogTarget(welko::LogTargetBase* target) {
  if (target == nullptr || !target->Open()) return false;
  std::vector<welko::LogTargetBase*>& targets = Registry()[target->GetName()];
  if (std::find(targets.begin(), targets.end(), target) == targets.end()) {
    target->AddRef();
    targets.push_back(target);
  }
  return true;
}

void WriteToTargets(const char* name, int level, const welko::LogContext& context,
                    const char* format, std::va_list* arguments, std::int64_t time_ms) {
  if (name == nullptr) return;
  const auto targets = Registry().find(name);
  if (targets == Registry().end()) return;
  for (welko::LogTargetBase* target : targets->second) {
    target->Log(level, context, format, arguments, time_ms, true);
  }
}

}  // namespace esd
