#include "slave/PdoWriter.h"

#include <cstdarg>
#include <cstdio>

namespace ethercat_simulation {

namespace {

constexpr const char* WARNING = "WARNING";
constexpr const char* ERROR = "ERROR";

} // namespace

void PdoWriter::write(const SyncManagerPlans& plans) const {
  if (!m_identity.coe || !m_slave.areKnown()) {
    return; // nowhere to write to, or nothing to compare with
  }
  for (unsigned int manager = 0; manager < SYNC_MANAGER_COUNT; ++manager) {
    const SyncManagerPlan& plan = plans[manager];
    if (plan.direction == EC_DIR_INVALID && !m_slave.hasManager(manager)) {
      continue;
    }
    for (const Pdo& pdo : plan.pdos) {
      writeMapping(pdo);
    }
    if (!writeAssignment(manager, plan.pdos)) {
      return; // the sync managers behind it are left out
    }
  }
}

void PdoWriter::writeMapping(const Pdo& pdo) const {
  if (!m_identity.pdoConfig) {
    const std::vector<Entry>* mapping = m_slave.mapping(pdo.index);
    if (mapping == nullptr || !isSame(*mapping, pdo.entries)) {
      log(WARNING, "Slave does not support changing the PDO mapping! (0x%04X)", unsigned{pdo.index});
    }
    return;
  }
  if (!m_slave.clearMapping(pdo.index)) {
    log(WARNING, "Failed to clear the mapping of PDO 0x%04X.", unsigned{pdo.index});
    return;
  }
  for (const Entry& entry : pdo.entries) {
    if (!m_slave.map(pdo.index, entry)) {
      m_slave.clearMapping(pdo.index); // the number of entries is written last, and never was
      log(WARNING, "Failed to map 0x%04X:%02X into PDO 0x%04X, which is empty now.", unsigned{entry.index},
          unsigned{entry.subindex}, unsigned{pdo.index});
      return;
    }
  }
}

bool PdoWriter::writeAssignment(unsigned int manager, const std::vector<Pdo>& pdos) const {
  if (!m_identity.pdoAssign) {
    if (!m_slave.isAssigned(manager, pdos)) {
      log(WARNING, "Slave does not support assigning PDOs! (SM%u)", manager);
    }
    return true;
  }
  if (!m_slave.clearAssignment(manager)) {
    log(WARNING, "Failed to clear the PDO assignment of SM%u.", manager);
    return true;
  }
  for (const Pdo& pdo : pdos) {
    if (!m_slave.assign(manager, pdo.index)) {
      m_slave.clearAssignment(manager);
      log(WARNING, "PDO configuration failed. (0x%04X refused in SM%u)", unsigned{pdo.index}, manager);
      return false;
    }
  }
  return true;
}

void PdoWriter::reportRefusal(std::uint16_t alStatusCode) const {
  log(ERROR, "Failed to set SAFEOP state, slave refused state change with AL status code 0x%04X.",
      unsigned{alStatusCode});
}

void PdoWriter::log(const char* level, const char* format, ...) const {
  char text[128];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  std::fprintf(stderr, "EtherCAT %s %u-%u: %s\n", level, m_master, m_position, text);
}

} // namespace ethercat_simulation
