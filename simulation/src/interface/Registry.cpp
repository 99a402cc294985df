#include "interface/Registry.h"

#include "busfile/BusFile.h"
#include "interface/DeviceFile.h"
#include "interface/Handles.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace ethercat_simulation {

Registry& Registry::instance() {
  static Registry& registry = *new Registry; // outlives every user, see Handles
  return registry;
}

Master& Registry::make(unsigned int index) {
  std::unique_ptr<Master>& master = m_masters[index];
  if (master == nullptr) {
    master = std::make_unique<Master>(index);
  }
  return *master;
}

Master* Registry::known(unsigned int index) {
  const auto found = m_masters.find(index);
  return found != m_masters.end() ? found->second.get() : nullptr;
}

Master* Registry::find(unsigned int index, bool* explained) {
  Master* master = known(index);
  if (master == nullptr && !m_environmentRead) {
    m_environmentRead = true;
    const bool printed = loadEnvironment();
    if (explained != nullptr) {
      *explained = printed;
    }
    master = known(index);
  }
  return master;
}

bool Registry::loadEnvironment() {
  const char* path = std::getenv("ETHERCAT_SIMULATION_BUS");
  if (path == nullptr || *path == '\0') {
    return false;
  }
  std::vector<BusPlan> plans;
  const std::string problem = readBusFile(path, plans);
  if (!problem.empty()) {
    std::fprintf(stderr, "%s\n", problem.c_str());
    return true;
  }
  for (const BusPlan& plan : plans) {
    if (known(plan.index) == nullptr) {
      plan.build(make(plan.index));
    }
  }
  return false;
}

void Registry::reset() {
  orphanDeviceFiles();
  Handles::instance().forgetAll();
  m_lastRequested = nullptr;
  m_environmentRead = false;
  for (auto& [index, master] : m_masters) {
    if (master->slaves().waits()) {
      master->end();
      m_ended.push_back(std::move(master));
    }
  }
  m_masters.clear();
  m_ended.erase(std::remove_if(m_ended.begin(), m_ended.end(),
                               [](const auto& master) { return !master->slaves().waits(); }),
                m_ended.end());
}

Master* Registry::culprit() {
  if (m_lastRequested == nullptr && !m_masters.empty()) {
    return m_masters.begin()->second.get();
  }
  return m_lastRequested;
}

} // namespace ethercat_simulation
