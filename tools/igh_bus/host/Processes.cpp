#include "host/Processes.h"

#include "text/Text.h"

#include <algorithm>

namespace igh_bus {
namespace {

std::vector<std::string> processes(const Machine& machine) {
  auto list = machine.names("/proc");
  const auto isNoNumber = [](const std::string& name) {
    return name.find_first_not_of("0123456789") != std::string::npos;
  };
  list.erase(std::remove_if(list.begin(), list.end(), isNoNumber), list.end());
  return list;
}

std::string described(const std::string& name, const std::string& process) {
  return format("%s (%s)", name.c_str(), process.c_str());
}

std::string nameOf(const Machine& machine, const std::string& process) {
  return machine.line("/proc/" + process + "/comm").value_or("");
}

} // namespace

std::string runningProcess(const Machine& machine, const std::string& name) {
  for (const auto& process : processes(machine)) {
    if (nameOf(machine, process) == name)
      return described(name, process);
  }
  return {};
}

Holders holdersOf(const Machine& machine, const std::string& path) {
  Holders holders;
  for (const auto& process : processes(machine)) {
    const std::string folder = "/proc/" + process + "/fd";
    const auto descriptors = machine.names(folder);
    // The kernel's own threads have none either, but also no program.
    if (descriptors.empty() && machine.exists(folder) && machine.line("/proc/" + process + "/cmdline") != "")
      holders.complete = false;
    const auto isPath = [&](const std::string& descriptor) {
      return machine.target(std::string(folder).append("/").append(descriptor)) == path;
    };
    if (std::none_of(descriptors.begin(), descriptors.end(), isPath))
      continue;
    holders.text += holders.text.empty() ? "" : ", ";
    holders.text += described(nameOf(machine, process), process);
  }
  return holders;
}

} // namespace igh_bus
