// What the kernel lets a real-time thread do.
#include "host/Checks.h"
#include "host/Host.h"
#include "host/Limits.h"
#include "text/Text.h"

namespace igh_bus {
namespace {

constexpr Topic KERNEL{"kernel", "kernel", "PREEMPT_RT", 90};
constexpr Topic CLOCK{"clock_source", "clock source", "tsc, which takes nanoseconds to read", 55};
constexpr Topic PRIORITY{"rt_priority", "real-time priority", "up to 80 at least", 88};
constexpr Topic THROTTLING{"rt_throttling", "RT throttling", "off: else a thread that is busy is stopped",
                           25};

Finding preemption(const Machine& machine) {
  const auto host = inspectHost(machine);
  const auto is =
      host.kernel + ", " + (host.preemption == "PREEMPT_RT" ? "" : "preemption: ") + host.preemption;
  if (host.preemption == "PREEMPT_RT")
    return good(KERNEL, is);
  if (host.kernel == "unknown")
    return unseen(KERNEL, host.kernel);
  return amiss(KERNEL, is, "sudo apt install linux-image-rt-amd64 && sudo reboot");
}

Finding clockSource(const Machine& machine) {
  const auto is = inspectHost(machine).clockSource;
  if (is == "tsc" || is == "arch_sys_counter")
    return good(CLOCK, is);
  if (is == "unknown")
    return unseen(CLOCK, is);
  return amiss(CLOCK, is, "sudo dmesg | grep -i tsc; where it is stable, boot with tsc=reliable");
}

Finding priority(const Machine& machine) {
  constexpr int SYS_NICE = 23; // capability
  constexpr std::int64_t ENOUGH = 80;
  const auto limit = inspectLimit(machine, "Max realtime priority", SYS_NICE);
  if (!limit)
    return unseen(PRIORITY, "unknown");
  if (*limit >= ENOUGH)
    return good(PRIORITY,
                *limit == UNLIMITED ? "no limit" : format("up to %lld", static_cast<long long>(*limit)));
  return amiss(PRIORITY, format("limit of %lld", static_cast<long long>(*limit)), limitsCommand("rtprio 98"));
}

Finding throttling(const Machine& machine) {
  const auto runtime = machine.number("/proc/sys/kernel/sched_rt_runtime_us");
  const auto period = machine.number("/proc/sys/kernel/sched_rt_period_us");
  if (!runtime)
    return unseen(THROTTLING, "unknown");
  if (*runtime == -1 || (period && *runtime >= *period))
    return good(THROTTLING, "off");
  return amiss(
      THROTTLING,
      format("%lld us of every %lld", static_cast<long long>(*runtime),
             static_cast<long long>(period.value_or(1000000))),
      "echo kernel.sched_rt_runtime_us=-1 | sudo tee /etc/sysctl.d/90-realtime.conf && sudo sysctl --system");
}

} // namespace

void checkKernel(const Machine& machine, Findings& findings) {
  findings.push_back(preemption(machine));
  findings.push_back(clockSource(machine));
  findings.push_back(priority(machine));
  findings.push_back(throttling(machine));
}

} // namespace igh_bus
