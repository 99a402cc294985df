// The functions of Simulation.h.
#include "busfile/BusFile.h"
#include "control/ControlFace.h"
#include "interface/Registry.h"

#include <ethercat_simulation/Simulation.h>

#include <map>

namespace ethercat_simulation {

namespace {

// Outlives every user, see Handles.
std::map<unsigned int, ControlFace>& faces() {
  static auto& faces = *new std::map<unsigned int, ControlFace>;
  return faces;
}

bool hasBus(Master& master) {
  return master.reservation().held() || master.topology().line().size() > 0;
}

} // namespace

Bus& bus(unsigned int masterIndex) {
  return faces().try_emplace(masterIndex, Registry::instance().make(masterIndex)).first->second;
}

void reset() {
  faces().clear();
  Registry::instance().reset();
}

std::string loadBusFile(const std::string& path) {
  Registry& registry = Registry::instance();
  std::vector<BusPlan> plans;
  std::string problem = readBusFile(path, plans);
  for (const BusPlan& plan : plans) {
    Master* master = registry.known(plan.index);
    if (problem.empty() && master != nullptr && hasBus(*master)) {
      problem = path + ": " + plan.place + ": master " + std::to_string(plan.index) + " has a bus already";
    }
  }
  if (problem.empty()) {
    for (const BusPlan& plan : plans) {
      plan.build(registry.make(plan.index));
    }
  }
  return problem;
}

} // namespace ethercat_simulation
