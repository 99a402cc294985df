// What the master writes into the PDO objects of a slave on its way to SAFEOP, and what it only complains of.
#ifndef ETHERCAT_SIMULATION_PDO_WRITER_H
#define ETHERCAT_SIMULATION_PDO_WRITER_H

#include "slave/SlavePdos.h"

namespace ethercat_simulation {

// Complaints are the kernel log's, one line each on standard error.
class PdoWriter {
public:
  PdoWriter(SlavePdos& slave, const Slave& identity, unsigned int master, unsigned int position)
      : m_slave(slave), m_identity(identity), m_master(master), m_position(position) {}

  // Never fails: whatever the slave refuses, the climb goes on.
  void write(const SyncManagerPlans& plans) const;
  void reportRefusal(std::uint16_t alStatusCode) const;

private:
  void writeMapping(const Pdo& pdo) const;
  bool writeAssignment(unsigned int manager, const std::vector<Pdo>& pdos) const;
  void log(const char* level, const char* format, ...) const __attribute__((format(printf, 3, 4)));

  SlavePdos& m_slave;
  const Slave& m_identity;
  unsigned int m_master;
  unsigned int m_position;
};

} // namespace ethercat_simulation

#endif
