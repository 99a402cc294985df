// The error counters of all slaves, and what grows in them.
#ifndef IGH_BUS_COUNTER_WATCH_H
#define IGH_BUS_COUNTER_WATCH_H

#include "bus/DeviceFile.h"
#include "bus/Survey.h"

namespace igh_bus {

class CounterWatch {
public:
  // Both must outlive it.
  CounterWatch(const DeviceFile& device, const std::vector<FoundSlave>& slaves)
      : m_device(device), m_slaves(slaves), m_counters(slaves.size()) {}

  // As a table. A slave that cannot be reached does not keep the others from being served; then show and
  // clear throw Failure(busError) with the first reason.
  void show();
  void clear();
  // Prints a line for every counter that has grown, until a signal asks for the end.
  void watch(double intervalNs);

private:
  using Counters = std::vector<std::uint8_t>; // empty: the slave could not be reached

  Counters look(std::size_t slave, std::string* failure) const;
  unsigned int tellGrowth(std::size_t slave, const Counters& now) const;

  const DeviceFile& m_device;
  const std::vector<FoundSlave>& m_slaves;
  std::vector<Counters> m_counters; // as last seen
};

} // namespace igh_bus

#endif
