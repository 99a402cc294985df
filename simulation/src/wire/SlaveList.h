// The slaves as the master found them at its last scan, and the configurations that belong to them since.
#ifndef ETHERCAT_SIMULATION_SLAVE_LIST_H
#define ETHERCAT_SIMULATION_SLAVE_LIST_H

#include "slave/SlaveConfiguration.h"
#include "wire/Line.h"

namespace ethercat_simulation {

class SlaveList {
public:
  std::size_t size() const { return m_slaves.size(); }
  SlaveUnit* at(std::size_t position) const {
    return position < m_slaves.size() ? m_slaves[position] : nullptr;
  }
  const std::vector<SlaveUnit*>& slaves() const { return m_slaves; }
  int info(std::size_t position, ec_slave_info_t& info) const;

  // A scan must not allocate in the cycle.
  void reserve(std::size_t slaves) { m_slaves.reserve(slaves); }
  void make(const Line& line) { line.list(m_slaves); }
  void drop();

  // A new configuration, which finds its slave now or at a later scan. True when it has found it.
  bool add(SlaveConfiguration& configuration);
  void forgetConfigurations() { m_configurations.clear(); }
  // True when a configuration has found its slave.
  bool attachAll();
  // The slaves that have a configuration climb anew.
  void restart() const;

private:
  bool attach(SlaveConfiguration& configuration) const;
  SlaveUnit* find(const SlaveConfiguration& configuration, std::size_t* position) const;

  std::vector<SlaveUnit*> m_slaves;
  std::vector<SlaveConfiguration*> m_configurations;
};

} // namespace ethercat_simulation

#endif
