// Bus scan: one slave object per slave found, the registration list of all entries, and what the application
// asks of a slave.
#include "EthercatObject/CEthercatMaster.h"

#include <cstdio>
#include <utility>

namespace {

constexpr unsigned int MAX_SLAVES = 255;
constexpr int PRINT_ENTRIES_PDOS_AND_SYNC_MANAGERS = 14;

} // namespace

// What was scanned before is given up only when the new slaves are complete: a failed allocation changes
// nothing.
bool CEthercatMaster::scanEthercatSlave(unsigned int* slaveCount) {
  SLAVE_LIST slaves = readSlaves();
  CRegistrationList registration;
  if (!slaves.empty()) {
    registration.build(slaves);
  }
  clearAllSlaveObject();
  m_vecSlaves = std::move(slaves);
  m_registration = std::move(registration);
  if (slaveCount != nullptr) {
    *slaveCount = static_cast<unsigned int>(m_vecSlaves.size());
  }
  return !m_vecSlaves.empty();
}

SLAVE_LIST CEthercatMaster::readSlaves() {
  SLAVE_LIST slaves;
  ec_master_t* const master = m_reservation.master();
  for (unsigned int index = 0; master != nullptr && index < MAX_SLAVES; ++index) {
    ec_slave_info_t info{};
    if (ecrt_master_get_slave(master, static_cast<uint16_t>(index), &info) < 0) {
      break;
    }
    slaves.push_back(makeSlave(index, info));
  }
  return slaves;
}

std::unique_ptr<CEthercatSlave> CEthercatMaster::makeSlave(unsigned int index, const ec_slave_info_t& info) {
  reportMessage(m_pfnLog, 3,
                "slave(%d:%d) information: revision=(0x%08X), name=%s, product_code=0x%08X, vendor_id=0x%X\n",
                info.alias, info.position, info.revision_number, info.name, info.product_code,
                info.vendor_id);
  CSlaveENIObject* const description =
      m_pENIObject->findSlaveENIObject(info.vendor_id, info.product_code, info.revision_number);
  if (description != nullptr) {
    return std::make_unique<CEthercatSlave>(this, index, info.alias, info.position, description, m_pfnLog);
  }
  auto switcher = std::make_unique<CEthercatSlave>(this, index, info.alias, info.position, info.vendor_id,
                                                   info.product_code, info.revision_number, m_pfnLog);
  reportMessage(m_pfnLog, 1, "treat slave %d as switcher\n", static_cast<int>(index));
  return switcher;
}

void CEthercatMaster::dispConfiguration() const {
  m_registration.print();
  for (size_t index = 0; index < m_vecSlaves.size(); ++index) {
    const CSlaveENIObject* const description = m_vecSlaves[index]->getENIObject();
    if (description != nullptr) {
      std::printf("Slave %d configration:\n\n", static_cast<int>(index));
      description->syncInfoPrintf(PRINT_ENTRIES_PDOS_AND_SYNC_MANAGERS);
    }
  }
  std::fflush(stdout);
}

namespace {

void writeIfWanted(unsigned int* out, unsigned int value) {
  if (out != nullptr) {
    *out = value;
  }
}

// Also false for a slave without description.
bool writeSlotValue(const SLAVE_LIST& slaves, unsigned int slave,
                    unsigned int (CSlaveENIObject::*getter)() const, unsigned int* out) {
  const CSlaveENIObject* const description = slave < slaves.size() ? slaves[slave]->getENIObject() : nullptr;
  if (description == nullptr) {
    return false;
  }
  writeIfWanted(out, (description->*getter)());
  return true;
}

} // namespace

bool CEthercatMaster::getSlaveProductCode(unsigned int slave, unsigned int* productCode) const {
  if (slave >= m_vecSlaves.size()) {
    return false;
  }
  writeIfWanted(productCode, m_vecSlaves[slave]->getProductCode());
  return true;
}

bool CEthercatMaster::getSlaveRevisionCode(unsigned int slave, unsigned int* revisionCode) const {
  if (slave >= m_vecSlaves.size()) {
    return false;
  }
  writeIfWanted(revisionCode, m_vecSlaves[slave]->getRevisionCode());
  return true;
}

bool CEthercatMaster::getSlaveSlotNumber(unsigned int slave, unsigned int* slotNumber) const {
  return writeSlotValue(m_vecSlaves, slave, &CSlaveENIObject::getSlotNumber, slotNumber);
}

bool CEthercatMaster::getSlaveSlotIndexIncrement(unsigned int slave, unsigned int* increment) const {
  return writeSlotValue(m_vecSlaves, slave, &CSlaveENIObject::getSlotIndexIncrement, increment);
}

bool CEthercatMaster::getSlaveSlotPdoIncrement(unsigned int slave, unsigned int* increment) const {
  return writeSlotValue(m_vecSlaves, slave, &CSlaveENIObject::getSlotPdoIncrement, increment);
}
