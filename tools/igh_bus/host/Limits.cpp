#include "host/Limits.h"

#include <sstream>

namespace igh_bus {
namespace {

bool hasCapability(const Machine& machine, unsigned int number) {
  for (const auto& line : machine.lines("/proc/self/status")) {
    if (line.rfind("CapEff:", 0) != 0)
      continue;
    std::istringstream text(line.substr(7));
    std::uint64_t capabilities = 0;
    text >> std::hex >> capabilities;
    return (capabilities >> number & 1U) != 0;
  }
  return false;
}

} // namespace

std::optional<std::int64_t> inspectLimit(const Machine& machine, const std::string& name,
                                         unsigned int capability) {
  if (hasCapability(machine, capability))
    return UNLIMITED;
  for (const auto& line : machine.lines("/proc/self/limits")) {
    if (line.rfind(name + " ", 0) != 0)
      continue;
    std::istringstream text(line.substr(name.size()));
    std::string soft;
    std::int64_t number = 0;
    text >> soft;
    if (soft == "unlimited")
      return UNLIMITED;
    return std::istringstream(soft) >> number ? std::optional(number) : std::nullopt;
  }
  return std::nullopt;
}

std::string limitsCommand(const std::string& limit) {
  return "echo '@realtime - " + limit +
         "' | sudo tee -a /etc/security/limits.d/realtime.conf && sudo groupadd -f realtime && "
         "sudo usermod -aG realtime $USER; then log in again";
}

} // namespace igh_bus
