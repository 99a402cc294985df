// A processor of its own for the cycle, at full speed.
#include "host/Checks.h"
#include "host/Processes.h"
#include "host/ProcessorList.h"
#include "text/Text.h"

namespace igh_bus {
namespace {

constexpr Topic ISOLATED{"isolated_processors", "isolated processors",
                         "one at least that runs the cycle alone (run --cpu N)", 70};
constexpr Topic TICKLESS{"nohz_full", "nohz_full", "the isolated processors: no tick while one thread runs",
                         40};
constexpr Topic CALLBACKS{"rcu_nocbs", "rcu_nocbs", "the isolated processors: RCU callbacks run elsewhere",
                          35};
constexpr Topic GOVERNOR{"governor", "frequency governor", "performance, on every processor", 60};
constexpr Topic SMT{"smt", "SMT", "off, or isolated processors share their core with isolated ones only", 45};
constexpr Topic BALANCING{"irqbalance", "irqbalance", "not running: it moves the card's interrupt", 42};

const std::string systemFolder = "/sys/devices/system/cpu/";

struct Processors {
  ProcessorList online;
  ProcessorList isolated;
  ProcessorList meant; // for the cycle: the isolated ones, else the last
};

ProcessorList listIn(const Machine& machine, const std::string& file) {
  return parseProcessors(machine.line(systemFolder + file).value_or(""), 0).value_or(ProcessorList{});
}

Processors inspect(const Machine& machine) {
  Processors processors{listIn(machine, "online"), listIn(machine, "isolated"), {}};
  processors.meant = processors.isolated;
  if (processors.meant.empty() && processors.online.size() > 1)
    processors.meant = {*processors.online.rbegin()};
  return processors;
}

// The value of a word of the kernel's command line, the last that is given.
std::optional<std::string> booted(const Machine& machine, const std::string& word) {
  const auto line = " " + machine.line("/proc/cmdline").value_or("");
  const auto place = line.rfind(" " + word + "=");
  if (place == std::string::npos)
    return std::nullopt;
  const auto from = place + word.size() + 2;
  return line.substr(from, line.find(' ', from) - from);
}

std::string bootCommand(const Processors& processors) {
  const auto meant = processorsText(processors.meant);
  return "sudo sed -i 's/^GRUB_CMDLINE_LINUX=\"/&isolcpus=" + meant + " nohz_full=" + meant +
         " rcu_nocbs=" + meant +
         " irqaffinity=" + processorsText(without(processors.online, processors.meant)) +
         " /' /etc/default/grub && sudo update-grub && sudo reboot";
}

Finding isolation(const Processors& processors) {
  if (!processors.isolated.empty())
    return good(ISOLATED, processorsText(processors.isolated));
  if (processors.online.empty())
    return unseen(ISOLATED, "unknown");
  if (processors.online.size() == 1)
    return amiss(ISOLATED, "none, of one", "use a machine with two processors or more");
  return amiss(ISOLATED, "none", bootCommand(processors));
}

Finding covering(const Topic& topic, const Processors& processors, const ProcessorList& list,
                 const std::string& is) {
  if (processors.meant.empty())
    return good(topic, is + ": nothing to keep free");
  const auto rest = without(processors.meant, list);
  if (rest.empty())
    return good(topic, is);
  return amiss(topic, is + (processors.isolated.empty() ? "" : ", without " + processorsText(rest)),
               bootCommand(processors));
}

Finding unread(const Topic& topic, const std::string& text) {
  return unseen(topic, "cannot make sense of " + text);
}

// What the kernel made of the command line; one that is built without it has no such file.
std::optional<ProcessorList> tickless(const Machine& machine) {
  const auto text = machine.line(systemFolder + "nohz_full").value_or("");
  return text == "(null)" ? ProcessorList{} : parseProcessors(text, 0);
}

Finding ticks(const Machine& machine, const Processors& processors) {
  const auto list = tickless(machine);
  if (!list)
    return unread(TICKLESS, systemFolder + "nohz_full");
  const bool ignored = list->empty() && booted(machine, "nohz_full");
  return covering(TICKLESS, processors, *list,
                  processorsText(*list) +
                      (ignored ? ", though booted with it: not built into this kernel" : ""));
}

// Processors without tick are without callbacks, too.
Finding callbacks(const Machine& machine, const Processors& processors) {
  const auto text = booted(machine, "rcu_nocbs").value_or("");
  const auto last = processors.online.empty() ? 0U : *processors.online.rbegin();
  auto list = parseProcessors(text, last);
  if (!list)
    return unread(CALLBACKS, "rcu_nocbs=" + text);
  const auto also = tickless(machine).value_or(ProcessorList{});
  list->insert(also.begin(), also.end());
  return covering(CALLBACKS, processors, *list, processorsText(*list));
}

Finding governor(const Machine& machine, const Processors& processors) {
  std::map<std::string, ProcessorList> governors;
  for (const auto number : processors.online) {
    if (const auto name = machine.line(systemFolder + format("cpu%u/cpufreq/scaling_governor", number)))
      governors[*name].insert(number);
  }
  std::string is;
  for (const auto& [name, list] : governors)
    is += (is.empty() ? "" : ", ") + name + " on " + processorsText(list);
  if (governors.empty())
    return unseen(GOVERNOR, "unknown: no frequency scaling here, as in a virtual machine");
  if (governors.size() == 1 && governors.count("performance") == 1)
    return good(GOVERNOR, is);
  return amiss(GOVERNOR, is, "sudo cpupower frequency-set -g performance (linux-cpupower)");
}

Finding threads(const Machine& machine, const Processors& processors) {
  const auto active = machine.line(systemFolder + "smt/active");
  if (!active)
    return unseen(SMT, "unknown");
  if (*active != "1")
    return good(SMT, "off");
  ProcessorList strangers;
  for (const auto number : processors.meant) {
    const auto siblings =
        without(listIn(machine, format("cpu%u/topology/thread_siblings_list", number)), processors.meant);
    strangers.insert(siblings.begin(), siblings.end());
  }
  if (strangers.empty())
    return good(SMT, "on, isolated processors have their cores for themselves");
  return amiss(SMT,
               "on: processor " + processorsText(processors.meant) + " shares a core with " +
                   processorsText(strangers),
               "echo off | sudo tee " + systemFolder + "smt/control; for good: boot with nosmt");
}

Finding balancing(const Machine& machine) {
  const auto process = runningProcess(machine, "irqbalance");
  return process.empty() ? good(BALANCING, "not running")
                         : amiss(BALANCING, process, "sudo systemctl disable --now irqbalance");
}

} // namespace

void checkProcessors(const Machine& machine, Findings& findings) {
  const auto processors = inspect(machine);
  findings.push_back(isolation(processors));
  findings.push_back(ticks(machine, processors));
  findings.push_back(callbacks(machine, processors));
  findings.push_back(governor(machine, processors));
  findings.push_back(threads(machine, processors));
  findings.push_back(balancing(machine));
}

} // namespace igh_bus
