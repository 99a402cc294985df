#include "host/Host.h"

#include "text/Text.h"

#include <sched.h>

namespace igh_bus {
namespace {

std::string orUnknown(const std::string& text) {
  return text.empty() ? "unknown" : text;
}

std::string preemptionModel(const Machine& machine) {
  const auto version = machine.line("/proc/sys/kernel/version").value_or("");
  if (version.find("PREEMPT_RT") != std::string::npos || machine.line("/sys/kernel/realtime") == "1")
    return "PREEMPT_RT";
  // A dynamic kernel lists its models with the one in use in parentheses; only root may read that.
  const auto models = machine.line("/sys/kernel/debug/sched/preempt").value_or("");
  const auto open = models.find('(');
  const auto close = models.find(')');
  if (open != std::string::npos && close != std::string::npos && open < close)
    return models.substr(open + 1, close - open - 1);
  if (version.find("PREEMPT_DYNAMIC") != std::string::npos)
    return "dynamic (model unknown)";
  return version.find("PREEMPT") != std::string::npos ? "full" : "none or voluntary";
}

// x86 has its model here, ARM boards in the device tree.
std::string processorModel(const Machine& machine) {
  for (const auto& line : machine.lines("/proc/cpuinfo")) {
    const auto value = line.find(": ");
    if (line.rfind("model name", 0) == 0 && value != std::string::npos)
      return line.substr(value + 2);
  }
  return machine.line("/proc/device-tree/model").value_or("");
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

Host inspectHost(const Machine& machine) {
  const auto line = [&machine](const char* path) { return machine.line(path).value_or(""); };
  const auto isolated = line("/sys/devices/system/cpu/isolated");
  return {orUnknown(line("/proc/sys/kernel/osrelease")),
          preemptionModel(machine),
          orUnknown(line("/sys/devices/system/cpu/cpu0/cpufreq/scaling_governor")),
          isolated.empty() ? "none" : isolated,
          orUnknown(line("/sys/devices/system/clocksource/clocksource0/current_clocksource")),
          schedulingOfThisThread(),
          orUnknown(line("/proc/sys/kernel/hostname")),
          orUnknown(processorModel(machine))};
}

} // namespace igh_bus
