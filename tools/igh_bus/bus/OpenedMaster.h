// A master that is looked at without being reserved, so beside a running application, too.
#ifndef IGH_BUS_OPENED_MASTER_H
#define IGH_BUS_OPENED_MASTER_H

#include "bus/Survey.h"

#include <optional>

namespace igh_bus {

class OpenedMaster {
public:
  // Waits for a scan of the bus to end. Throws Failure.
  explicit OpenedMaster(std::uint16_t master);
  ~OpenedMaster();
  OpenedMaster(const OpenedMaster&) = delete;
  OpenedMaster& operator=(const OpenedMaster&) = delete;

  ec_master_t* handle() const { return m_master; }
  // Throws Failure(busError) when there is none.
  std::vector<FoundSlave> slaves(const std::vector<Device>& devices) const;
  // As the master knows it now; nothing for a slave that is not on the bus, or while the master scans.
  std::optional<ec_slave_info_t> slave(std::uint16_t position) const;
  bool scans() const;
  // As the master has read them of the slave itself; entries have neither names nor types.
  std::vector<SyncManager> syncManagers(const FoundSlave& slave) const;

private:
  Pdo pdo(std::uint16_t slave, std::uint8_t syncManager, std::uint16_t place) const;

  ec_master_t* m_master;
  std::uint16_t m_index;
};

} // namespace igh_bus

#endif
