// What can make a page of memory come late.
#include "host/Checks.h"
#include "host/Limits.h"
#include "text/Text.h"

namespace igh_bus {
namespace {

constexpr Topic LOCKED{"locked_memory", "locked memory", "no limit: page faults delay the cycle", 80};
constexpr Topic HUGE_PAGES{"huge_pages", "transparent huge pages", "madvise or never", 20};
constexpr Topic SWAP{"swap", "swap", "none", 15};

Finding locked(const Machine& machine) {
  constexpr int IPC_LOCK = 14; // capability
  const auto limit = inspectLimit(machine, "Max locked memory", IPC_LOCK);
  if (!limit)
    return unseen(LOCKED, "unknown");
  if (*limit == UNLIMITED)
    return good(LOCKED, "no limit");
  return amiss(LOCKED, format("limit of %lld kB", static_cast<long long>(*limit / 1024)),
               limitsCommand("memlock unlimited"));
}

// The mode in use stands in brackets.
Finding hugePages(const Machine& machine) {
  const auto modes = machine.line("/sys/kernel/mm/transparent_hugepage/enabled").value_or("");
  const auto open = modes.find('[');
  const auto close = modes.find(']');
  if (open == std::string::npos || close == std::string::npos || close < open)
    return unseen(HUGE_PAGES, "unknown");
  const auto mode = modes.substr(open + 1, close - open - 1);
  if (mode != "always")
    return good(HUGE_PAGES, mode);
  return amiss(HUGE_PAGES, mode, "echo madvise | sudo tee /sys/kernel/mm/transparent_hugepage/enabled");
}

Finding swap(const Machine& machine) {
  const auto lines = machine.lines("/proc/swaps"); // a heading first
  if (lines.empty())
    return unseen(SWAP, "unknown");
  std::string areas;
  for (std::size_t i = 1; i < lines.size(); ++i)
    areas += (areas.empty() ? "" : ", ") + lines[i].substr(0, lines[i].find(' '));
  return areas.empty() ? good(SWAP, "none")
                       : amiss(SWAP, areas, "sudo swapoff -a, and take it out of /etc/fstab");
}

} // namespace

void checkMemory(const Machine& machine, Findings& findings) {
  findings.push_back(locked(machine));
  findings.push_back(hugePages(machine));
  findings.push_back(swap(machine));
}

} // namespace igh_bus
