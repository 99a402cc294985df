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

std::string build(const std::vector<BusPlan>& plans) {
  Registry& registry = Registry::instance();
  for (const BusPlan& plan : plans) {
    Master* master = registry.known(plan.index);
    if (master != nullptr && hasBus(*master)) {
      return plan.place + ": master " + std::to_string(plan.index) + " has a bus already";
    }
  }
  for (const BusPlan& plan : plans) {
    plan.build(registry.make(plan.index));
  }
  return {};
}

} // namespace

Bus& bus(unsigned int masterIndex) {
  const Guard guard;
  return faces().try_emplace(masterIndex, Registry::instance().make(masterIndex)).first->second;
}

void reset() {
  const Guard guard;
  faces().clear();
  Registry::instance().reset();
}

std::string loadBusFile(const std::string& path) {
  const Guard guard;
  std::vector<BusPlan> plans;
  std::string problem = readBusFile(path, plans);
  if (problem.empty()) {
    problem = build(plans);
    problem = problem.empty() ? problem : path + ": " + problem;
  }
  return problem;
}

std::string buildBuses(const std::string& json) {
  const Guard guard;
  std::vector<BusPlan> plans;
  const std::string problem = readBusText(json, plans);
  return problem.empty() ? build(plans) : problem;
}

} // namespace ethercat_simulation
