#include "host/Host.h"

#include "text/Text.h"

#include <fstream>
#include <sched.h>
#include <sys/utsname.h>

namespace igh_bus {
namespace {

std::string orUnknown(const std::string& text) {
  return text.empty() ? "unknown" : text;
}

std::string preemptionModel(const std::string& version) {
  if (version.find("PREEMPT_RT") != std::string::npos || firstLine("/sys/kernel/realtime") == "1")
    return "PREEMPT_RT";
  // A dynamic kernel lists its models with the one in use in parentheses; only root may read that.
  const auto models = firstLine("/sys/kernel/debug/sched/preempt");
  const auto open = models.find('(');
  const auto close = models.find(')');
  if (open != std::string::npos && close != std::string::npos && open < close)
    return models.substr(open + 1, close - open - 1);
  if (version.find("PREEMPT_DYNAMIC") != std::string::npos)
    return "dynamic (model unknown)";
  return version.find("PREEMPT") != std::string::npos ? "full" : "none or voluntary";
}

std::string schedulingOfThisThread() {
  sched_param parameter{};
  const int policy = sched_getscheduler(0);
  sched_getparam(0, &parameter);
  if (policy == SCHED_FIFO || policy == SCHED_RR)
    return format("%s %d", policy == SCHED_FIFO ? "SCHED_FIFO" : "SCHED_RR", parameter.sched_priority);
  return policy == SCHED_DEADLINE ? "SCHED_DEADLINE" : "SCHED_OTHER";
}

} // namespace

std::string firstLine(const char* path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

Host inspectHost() {
  utsname name{};
  uname(&name);
  const auto isolated = firstLine("/sys/devices/system/cpu/isolated");
  return {orUnknown(name.release),
          preemptionModel(name.version),
          orUnknown(firstLine("/sys/devices/system/cpu/cpu0/cpufreq/scaling_governor")),
          isolated.empty() ? "none" : isolated,
          orUnknown(firstLine("/sys/devices/system/clocksource/clocksource0/current_clocksource")),
          schedulingOfThisThread()};
}

} // namespace igh_bus
