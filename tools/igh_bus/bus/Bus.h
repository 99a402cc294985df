// The bus before the library takes it: which one it is, and which slaves are on it.
#ifndef IGH_BUS_BUS_H
#define IGH_BUS_BUS_H

#include "bus/Options.h"
#include "descriptions/Device.h"

#include <ecrt.h>

namespace igh_bus {

// Decides, on the simulated platform, which bus is simulated: the file of --bus, else that of the
// environment, else one of every device once. The last lives in an anonymous file of this process, so nothing
// stays behind however the process ends. Keep the object as long as the bus may be read. Throws
// Failure(usageError).
class BusChoice {
public:
  BusChoice(const ScanOptions& options, const std::vector<Device>& devices);
  ~BusChoice();
  BusChoice(const BusChoice&) = delete;
  BusChoice& operator=(const BusChoice&) = delete;

private:
  int m_file = -1;
};

struct FoundSlave {
  ec_slave_info_t info;
  const Device* device = nullptr; // its description, null for none
};

// Reserves the master, reads its slaves and releases it. Throws Failure when there is no master or no slave.
std::vector<FoundSlave> surveyBus(const ScanOptions& options, const std::vector<Device>& devices);

// Throws Failure(busError) for a bus with more slaves than the library drives.
void checkSize(const std::vector<FoundSlave>& slaves);

// Throws Failure(usageError) for a slave that is not on the bus.
void checkSlave(std::uint32_t slave, const std::vector<FoundSlave>& slaves);

// The columns of `ethercat slaves` and the description behind each, then a line for every slave with an
// alias.
void printSlaves(const std::vector<FoundSlave>& slaves);

} // namespace igh_bus

#endif
