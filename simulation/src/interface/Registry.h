// The masters that exist, by index.
#ifndef ETHERCAT_SIMULATION_REGISTRY_H
#define ETHERCAT_SIMULATION_REGISTRY_H

#include "master/Master.h"

#include <map>

namespace ethercat_simulation {

class Registry {
public:
  static Registry& instance();

  Master& make(unsigned int index);
  // Reads the bus file of the environment first, when that has not been done. Null when there is no such
  // master; *explained tells whether a line about the bus file has just been printed.
  Master* find(unsigned int index, bool* explained = nullptr);
  // As find, without looking for a bus file.
  Master* known(unsigned int index);
  // Number of masters as the real module counts them.
  unsigned int count() const { return m_masters.empty() ? 0 : m_masters.rbegin()->first + 1; }
  void reset();

  // Misuse that no handle assigns to a master is charged to the one requested last.
  Master* culprit();
  void requested(Master& master) { m_lastRequested = &master; }

private:
  bool loadEnvironment();

  std::map<unsigned int, std::unique_ptr<Master>> m_masters;
  std::vector<std::unique_ptr<Master>> m_ended; // in which a call still waits for the bus
  Master* m_lastRequested = nullptr;
  bool m_environmentRead = false;
};

} // namespace ethercat_simulation

#endif
