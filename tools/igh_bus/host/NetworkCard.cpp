#include "host/NetworkCard.h"

#include "text/Text.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <strings.h>

namespace igh_bus {
namespace {

// With main_devices=A,B the module has a master for each.
std::string entry(const std::string& list, unsigned int number) {
  std::istringstream words(list);
  std::string word;
  for (unsigned int i = 0; i <= number; ++i) {
    if (!std::getline(words, word, ','))
      return {};
  }
  return word;
}

std::string configured(const Machine& machine, unsigned int master) {
  const auto name = format("MASTER%u_DEVICE=", master);
  for (const char* const file :
       {"/etc/ethercat.conf", "/etc/sysconfig/ethercat", "/opt/etherlab/etc/ethercat.conf"}) {
    for (const auto& line : machine.lines(file)) {
      if (line.rfind(name, 0) != 0)
        continue;
      auto value = line.substr(name.size());
      value.erase(std::remove(value.begin(), value.end(), '"'), value.end());
      return value;
    }
  }
  return {};
}

std::string interfaceOf(const Machine& machine, const std::string& address) {
  for (const auto& name : machine.names("/sys/class/net")) {
    const auto its = machine.line("/sys/class/net/" + name + "/address").value_or("");
    if (name == address || (!its.empty() && strcasecmp(its.c_str(), address.c_str()) == 0))
      return name;
  }
  return {};
}

} // namespace

bool NetworkCard::isNative() const {
  const auto isGeneric = [](const std::string& name) { return name == "generic"; };
  return interface.empty() ? std::any_of(masterDrivers.begin(), masterDrivers.end(), std::not_fn(isGeneric))
                           : driver.rfind("ec_", 0) == 0;
}

NetworkCard findCard(const Patient& patient) {
  const Machine& machine = patient.machine;
  NetworkCard card;
  card.interface = patient.card;
  if (patient.card.empty()) {
    card.address =
        entry(machine.line("/sys/module/ec_master/parameters/main_devices").value_or(""), patient.master);
    if (card.address.empty())
      card.address = configured(machine, patient.master);
    card.interface = interfaceOf(machine, card.address);
  }
  const auto driver = machine.target("/sys/class/net/" + card.interface + "/device/driver");
  card.driver = driver.substr(driver.rfind('/') + 1);
  for (const auto& module : machine.names("/sys/module")) {
    if (module.rfind("ec_", 0) == 0 && module != "ec_master")
      card.masterDrivers.push_back(module.substr(3));
  }
  return card;
}

} // namespace igh_bus
