// What the master reads from a slave's own memory (its SII) when it scans: sync managers, PDOs, mailbox.
#ifndef ETHERCAT_SIMULATION_SLAVE_MEMORY_H
#define ETHERCAT_SIMULATION_SLAVE_MEMORY_H

#include "base/Interface.h"

#include <ethercat_simulation/Slave.h>

#include <array>

namespace ethercat_simulation {

// From the first on, without holes: the two of the mailbox, and up to the last that has PDOs.
std::uint8_t syncManagerCount(const Slave& slave);

// As the slave maps and assigns by itself; what has been written to it since is not read again. The lists
// inside a record stay empty. 0, -ENOENT (no slave can have this sync manager) or -EINVAL (this one has
// none).
int readSyncManager(const Slave& slave, unsigned int index, ec_sync_info_t& info);
int readPdo(const Slave& slave, unsigned int syncManager, std::size_t place, ec_pdo_info_t& info);
int readPdoEntry(const Slave& slave, unsigned int syncManager, std::size_t pdo, std::size_t place,
                 ec_pdo_entry_info_t& info);

using SiiWords = std::array<std::uint16_t, 0x40>; // its fixed part
SiiWords siiWords(const Slave& slave);

} // namespace ethercat_simulation

#endif
