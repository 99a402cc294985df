// What can be seen of the slaves beside a running cycle.
#ifndef IGH_BUS_SLAVE_LOOK_H
#define IGH_BUS_SLAVE_LOOK_H

#include "bus/DeviceFile.h"
#include "bus/OpenedMaster.h"

#include <string>
#include <vector>

namespace igh_bus {

struct SlaveSight {
  bool answers = true;
  std::uint8_t alState = 0;                 // with the error bit 0x10; 0 while nobody has looked
  std::uint16_t alStatus = 0;               // the AL status code of one that is not as it should be
  std::vector<unsigned int> lostPorts = {}; // which had a link at the start
};

class SlaveLook {
public:
  // Opens the master beside the one that holds it. Throws Failure.
  SlaveLook(std::uint16_t master, const std::vector<FoundSlave>& start);

  // One for each slave of the start, in order. Waits for the bus, so not in the cycle, and only while another
  // thread cycles: some 10 ms for a slave that is well, more for others, and for a scan to end.
  std::vector<SlaveSight> take() const;

private:
  std::vector<std::size_t> suspectsFirst() const;
  SlaveSight sight(std::size_t slave) const;
  SlaveSight glance(std::size_t slave) const;
  std::vector<unsigned int> lostPorts(std::size_t slave) const;
  std::optional<std::uint16_t> reg(std::size_t slave, std::uint16_t address) const;

  const std::vector<FoundSlave>& m_start;
  OpenedMaster m_master;
  DeviceFile m_device;
};

// The library configures every slave, described or not, and the master brings who is configured to OP.
bool isBelowOp(const SlaveSight& sight);
bool isTroubled(const SlaveSight& sight);

// "SAFEOP, AL status 0x001B: process data watchdog"; "does not answer"; "OP, link lost at port 1".
std::string sightText(const SlaveSight& sight);

} // namespace igh_bus

#endif
