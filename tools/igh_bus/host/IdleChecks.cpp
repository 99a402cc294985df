// How deep processors sleep, and whether a program may keep them from it.
#include "host/Checks.h"
#include "host/IdleStates.h"
#include "text/Text.h"

namespace igh_bus {
namespace {

constexpr Topic STATES{"c_states", "C-states", "none that takes more than 10 us to leave", 50};
constexpr Topic REQUEST{"dma_latency", "/dev/cpu_dma_latency",
                        "open to this user: igh_bus run holds C-states off by it", 48};

const std::string systemFolder = "/sys/devices/system/cpu/";

struct State {
  std::string name;
  std::int64_t exitUs = 0;
};

// Over all processors, of those that are not disabled.
State deepestState(const Machine& machine) {
  State deepest;
  for (const auto& processor : machine.names(systemFolder)) {
    const auto folder = systemFolder + processor + "/cpuidle/";
    for (const auto& state : machine.names(folder)) {
      const auto exitUs = machine.number(folder + state + "/latency").value_or(0);
      if (exitUs > deepest.exitUs && machine.number(folder + state + "/disable").value_or(0) == 0)
        deepest = {machine.line(folder + state + "/name").value_or(state), exitUs};
    }
  }
  return deepest;
}

Finding states(const Machine& machine) {
  constexpr std::int64_t SHALLOW_US = 10;
  const auto deepest = deepestState(machine);
  if (deepest.name.empty())
    return good(STATES, "none");
  const auto is =
      format("%s, %lld us to leave", deepest.name.c_str(), static_cast<long long>(deepest.exitUs));
  if (deepest.exitUs <= SHALLOW_US)
    return good(STATES, is);
  return amiss(STATES, is,
               "hold /dev/cpu_dma_latency open as igh_bus run does, or: sudo cpupower idle-set -D 10");
}

Finding request(const Machine& machine) {
  const std::string path = IdleStates::REQUEST_FILE;
  if (machine.mayWrite(path))
    return good(REQUEST, "may be written");
  if (!machine.exists(path))
    return unseen(REQUEST, "not there");
  return amiss(REQUEST, "closed to this user",
               "echo 'KERNEL==\"cpu_dma_latency\", GROUP=\"realtime\", MODE=\"0660\"' | "
               "sudo tee /etc/udev/rules.d/99-cpu_dma_latency.rules && sudo udevadm control --reload && "
               "sudo udevadm trigger --name-match=cpu_dma_latency");
}

} // namespace

void checkIdleStates(const Machine& machine, Findings& findings) {
  findings.push_back(states(machine));
  findings.push_back(request(machine));
}

} // namespace igh_bus
