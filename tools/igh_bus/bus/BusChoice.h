// Which bus it is.
#ifndef IGH_BUS_BUS_CHOICE_H
#define IGH_BUS_BUS_CHOICE_H

#include "bus/Options.h"
#include "descriptions/Device.h"

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

} // namespace igh_bus

#endif
