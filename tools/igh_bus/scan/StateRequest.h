// AL states asked of slaves, and what became of it.
#ifndef IGH_BUS_STATE_REQUEST_H
#define IGH_BUS_STATE_REQUEST_H

#include "bus/DeviceFile.h"
#include "bus/OpenedMaster.h"

#include <functional>

namespace igh_bus {

// INIT, PREOP, BOOT, SAFEOP or OP in either case. Throws Failure(usageError).
std::uint8_t parseState(const std::string& text);

class StateRequest {
public:
  // `ask` asks for the state; all must outlive it.
  StateRequest(const OpenedMaster& master, const DeviceFile& device, std::uint8_t wanted)
      : m_master(master), m_device(device), m_wanted(wanted) {}

  // Until every slave is there or has refused, for this time at most. Prints a line for each. Throws
  // Failure(busError) when one is not there.
  void await(const std::vector<std::uint16_t>& slaves, double seconds) const;

private:
  struct Seen {
    ec_slave_info_t info{};
    bool reached = false;
    bool over() const { return reached || info.error_flag != 0; }
  };
  Seen look(std::uint16_t slave) const;
  std::string text(const Seen& seen) const;

  const OpenedMaster& m_master;
  const DeviceFile& m_device;
  std::uint8_t m_wanted;
};

} // namespace igh_bus

#endif
