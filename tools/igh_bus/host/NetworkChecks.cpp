// The network card of the master, and what else reaches for it.
#include "host/Checks.h"
#include "host/NetworkCard.h"
#include "host/Processes.h"
#include "host/ProcessorList.h"
#include "text/Text.h"

#include <algorithm>
#include <array>

namespace igh_bus {
namespace {

constexpr Topic CARD{"network_card", "network card", "one of its own for the master", 75};
constexpr Topic DRIVER{"card_driver", "card driver", "the master's own, where it has one for this card", 28};
constexpr Topic LINK{"card_link", "link", "up, 100 Mbit/s, full duplex", 82};
constexpr Topic COALESCING{"card_coalescing", "interrupt coalescing", "off: a frame is told at once", 65};
constexpr Topic OFFLOADS{"card_offloads", "offloads", "off", 22};
constexpr Topic MANAGER{"network_manager", "NetworkManager", "keeps its hands off this card", 58};
constexpr Topic INTERRUPT{"card_interrupt", "card's interrupt", "each on one processor", 46};

std::string fileOf(const NetworkCard& card, const std::string& name) {
  return "/sys/class/net/" + card.interface + "/" + name;
}

Finding driver(const NetworkCard& card) {
  // Cards for which one of the releases has a driver of its own.
  static constexpr std::array<const char*, 9> OWN{"8139too", "e100",  "e1000",  "e1000e", "igb",
                                                  "igc",     "r8169", "stmmac", "genet"};
  if (card.driver.empty())
    return unseen(DRIVER, "unknown");
  if (std::find(OWN.begin(), OWN.end(), card.driver) == OWN.end())
    return good(DRIVER, card.driver + ", generic; the master has none of its own for it");
  return amiss(DRIVER, card.driver + ", generic: frames pass the network stack",
               "configure the master with --enable-" + card.driver + ", DEVICE_MODULES=\"" + card.driver +
                   "\" in /etc/ethercat.conf, then: sudo systemctl restart ethercat");
}

Finding link(const Machine& machine, const NetworkCard& card) {
  constexpr std::int64_t MBIT = 100;
  const auto carrier = machine.number(fileOf(card, "carrier"));
  if (!carrier) // the kernel refuses to say while the interface is down
    return amiss(LINK, "interface down", "sudo ip link set " + card.interface + " up");
  if (*carrier != 1)
    return amiss(LINK, "no link", "connect the first slave; is it powered?");
  const auto speed = machine.number(fileOf(card, "speed")).value_or(-1);
  const auto duplex = machine.line(fileOf(card, "duplex")).value_or("unknown");
  if (speed <= 0)
    return unseen(LINK, "up, of unknown speed");
  const auto is = format("up, %lld Mbit/s, %s duplex", static_cast<long long>(speed), duplex.c_str());
  if (speed == MBIT && duplex == "full")
    return good(LINK, is);
  return amiss(LINK, is,
               "no slave is at the other end, or: sudo ethtool -s " + card.interface +
                   " autoneg on advertise 0x008");
}

using Settings = std::map<std::string, std::string>;

Finding coalescing(const Settings& settings, const NetworkCard& card) {
  std::string is;
  std::string command = "sudo ethtool -C " + card.interface;
  bool known = false;
  const auto look = [&](const char* name, const char* good, const char* argument) {
    const auto setting = settings.find(name);
    known = known || setting != settings.end();
    if (setting == settings.end() || setting->second.rfind(good, 0) == 0 || setting->second == "n/a")
      return;
    is += (is.empty() ? "" : ", ") + std::string(name) + " " + setting->second;
    command += std::string(" ") + argument;
  };
  look("Adaptive RX", "off", "adaptive-rx off");
  look("rx-usecs", "0", "rx-usecs 0");
  look("tx-usecs", "0", "tx-usecs 0");
  if (!known)
    return unseen(COALESCING, "unknown");
  return is.empty() ? good(COALESCING, "off") : amiss(COALESCING, is, command);
}

Finding offloads(const Settings& settings, const NetworkCard& card) {
  static constexpr std::pair<const char*, const char*> NAMES[] = {{"generic-receive-offload", "gro"},
                                                                  {"generic-segmentation-offload", "gso"},
                                                                  {"tcp-segmentation-offload", "tso"},
                                                                  {"large-receive-offload", "lro"}};
  std::string is;
  std::string command = "sudo ethtool -K " + card.interface;
  bool known = false;
  for (const auto& [name, letters] : NAMES) {
    const auto setting = settings.find(name);
    known = known || setting != settings.end();
    if (setting == settings.end() || setting->second.rfind("on", 0) != 0)
      continue;
    is += (is.empty() ? "" : ", ") + std::string(name);
    command += std::string(" ") + letters + " off";
  }
  if (!known)
    return unseen(OFFLOADS, "unknown");
  return is.empty() ? good(OFFLOADS, "off") : amiss(OFFLOADS, is, command);
}

Finding manager(const Machine& machine, const NetworkCard& card) {
  const auto process = runningProcess(machine, "NetworkManager");
  if (process.empty())
    return good(MANAGER, "not running");
  const auto number = machine.line(fileOf(card, "ifindex")).value_or("");
  const auto lines = machine.lines("/run/NetworkManager/devices/" + number);
  if (std::find(lines.begin(), lines.end(), "managed=false") != lines.end())
    return good(MANAGER, "running, without this card");
  const auto is = process + (lines.empty() ? ", may manage " : ", manages ") + card.interface;
  return amiss(MANAGER, is,
               "printf '[keyfile]\\nunmanaged-devices=interface-name:" + card.interface +
                   "\\n' | sudo tee /etc/NetworkManager/conf.d/ethercat.conf && sudo nmcli general reload");
}

// A card with message-signalled interrupts has one for each queue; cards of virtual machines have them one
// device further up.
std::vector<std::string> interruptsOf(const Machine& machine, const NetworkCard& card) {
  for (const char* const folder : {"device/msi_irqs", "device/../msi_irqs"}) {
    auto list = machine.names(fileOf(card, folder));
    if (!list.empty())
      return list;
  }
  const auto single = machine.number(fileOf(card, "device/irq")).value_or(0);
  return single > 0 ? std::vector<std::string>{std::to_string(single)} : std::vector<std::string>{};
}

Finding interrupt(const Machine& machine, const NetworkCard& card) {
  std::string is;
  std::string command;
  for (const auto& number : interruptsOf(machine, card)) {
    const auto folder = "/proc/irq/" + number + "/";
    const auto text = machine.line(folder + "smp_affinity_list").value_or("");
    const auto list = parseProcessors(text, 0);
    if (!list || list->empty())
      continue;
    is += format("%s%s on %s", is.empty() ? "" : ", ", number.c_str(), text.c_str());
    if (list->size() > 1)
      command += format("%secho %u | sudo tee %ssmp_affinity_list", command.empty() ? "" : "; ",
                        *list->rbegin(), folder.c_str());
  }
  if (is.empty())
    return unseen(INTERRUPT, "unknown");
  return command.empty() ? good(INTERRUPT, is)
                         : amiss(INTERRUPT, is, command + " (the processor of the cycle, or its neighbour)");
}

} // namespace

void checkNetworkCard(const Patient& patient, Findings& findings) {
  const Machine& machine = patient.machine;
  const auto card = findCard(patient);
  if (card.isNative()) {
    findings.push_back(good(DRIVER, "native; the kernel's settings of the card do not matter"));
    return;
  }
  if (card.interface.empty() || !machine.exists("/sys/class/net/" + card.interface)) {
    const auto sought = patient.card.empty() ? card.address : patient.card;
    findings.push_back(
        sought.empty()
            ? unseen(CARD, "unknown: no master is configured", "igh_bus doctor --nic NAME")
            : amiss(CARD, "there is no " + sought, "ip link; then MASTER0_DEVICE in /etc/ethercat.conf"));
    return;
  }
  findings.push_back(good(CARD, card.interface + (card.address.empty() ? "" : ", " + card.address)));
  findings.push_back(driver(card));
  findings.push_back(link(machine, card));
  const auto settings = machine.cardSettings(card.interface);
  findings.push_back(coalescing(settings, card));
  findings.push_back(offloads(settings, card));
  findings.push_back(manager(machine, card));
  findings.push_back(interrupt(machine, card));
}

} // namespace igh_bus
