// Bus scan: one slave object per slave found, and the registration list of all their entries.
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
  _SCAN scan;
  if (m_reservation.master() != nullptr) {
    readSlaves(scan);
  }
  if (!scan.slaves.empty()) {
    buildRegistrationList(scan);
  }
  clearAllSlaveObject();
  m_vecSlaves.swap(scan.slaves);
  m_uiPdoEntryCount = scan.entryCount;
  m_vecPdoEntryNames.swap(scan.entryNames);
  m_vecPdoEntryBits.swap(scan.entryBits);
  m_pPdoEntryRegs = std::move(scan.entryRegs);
  if (slaveCount != nullptr) {
    *slaveCount = static_cast<unsigned int>(m_vecSlaves.size());
  }
  return !m_vecSlaves.empty();
}

void CEthercatMaster::readSlaves(_SCAN& scan) {
  for (unsigned int index = 0; index < MAX_SLAVES; ++index) {
    ec_slave_info_t info{};
    if (ecrt_master_get_slave(m_reservation.master(), static_cast<uint16_t>(index), &info) < 0) {
      return;
    }
    addSlave(scan, index, info);
  }
}

void CEthercatMaster::addSlave(_SCAN& scan, unsigned int index, const ec_slave_info_t& info) {
  reportMessage(m_pfnLog, 3,
                "slave(%d:%d) information: revision=(0x%08X), name=%s, product_code=0x%08X, vendor_id=0x%X\n",
                info.alias, info.position, info.revision_number, info.name, info.product_code,
                info.vendor_id);
  CSlaveENIObject* const description =
      m_pENIObject->findSlaveENIObject(info.vendor_id, info.product_code, info.revision_number);
  if (description != nullptr) {
    scan.slaves.push_back(
        std::make_unique<CEthercatSlave>(this, index, info.alias, info.position, description, m_pfnLog));
    scan.entryCount += description->getSlavePDOEntryCount();
    return;
  }
  scan.slaves.push_back(std::make_unique<CEthercatSlave>(this, index, info.alias, info.position,
                                                         info.vendor_id, info.product_code,
                                                         info.revision_number, m_pfnLog));
  reportMessage(m_pfnLog, 1, "treat slave %d as switcher\n", static_cast<int>(index));
}

void CEthercatMaster::buildRegistrationList(_SCAN& scan) {
  scan.entryRegs = std::make_unique<ec_pdo_entry_reg_t[]>(static_cast<size_t>(scan.entryCount) + 1);
  scan.entryNames.resize(scan.entryCount);
  scan.entryBits.reserve(scan.entryCount);
  size_t row = 0;
  for (const auto& slave : scan.slaves) {
    for (unsigned int entry = 0; entry < slave->getPdoEntryCount(); ++entry, ++row) {
      _PDO_ENTRY_OFFSET* const place = slave->getPdoEntryOffset(entry);
      ec_pdo_entry_reg_t& registration = scan.entryRegs[row];
      registration = slave->getENIObject()->getSlavePDOEntryReg()[entry];
      registration.alias = static_cast<uint16_t>(slave->getSlaveAlias());
      registration.position = static_cast<uint16_t>(slave->getSlavePosition());
      registration.offset = &place->offset;
      registration.bit_position = &place->bitPosition;
      scan.entryNames[row] = entryName(*slave->getENIObject(), entry);
    }
    appendEntryBits(*slave, scan.entryBits);
  }
}

void CEthercatMaster::dispConfiguration() const {
  if (m_pPdoEntryRegs != nullptr && m_uiPdoEntryCount > 0) {
    printRegistrationList();
  }
  for (size_t index = 0; index < m_vecSlaves.size(); ++index) {
    const CSlaveENIObject* const description = m_vecSlaves[index]->getENIObject();
    if (description != nullptr) {
      std::printf("Slave %d configration:\n\n", static_cast<int>(index));
      description->syncInfoPrintf(PRINT_ENTRIES_PDOS_AND_SYNC_MANAGERS);
    }
  }
  std::fflush(stdout);
}

void CEthercatMaster::printRegistrationList() const {
  std::fputs("const static ec_pdo_entry_reg_t domain1_regs[] = {\n", stdout);
  for (unsigned int row = 0; row < m_uiPdoEntryCount; ++row) {
    const ec_pdo_entry_reg_t& registration = m_pPdoEntryRegs[row];
    const bool last = row + 1 == m_uiPdoEntryCount;
    std::printf("    {%d, %d, 0x%08X, 0x%08X, 0x%04X, %d, &intOffset[%d], &intBitPosition[%d]}\t/* %s */%s\n",
                registration.alias, registration.position, registration.vendor_id, registration.product_code,
                static_cast<unsigned int>(registration.index), registration.subindex, static_cast<int>(row),
                static_cast<int>(row), m_vecPdoEntryNames[row].c_str(), last ? "" : ", ");
  }
  std::fputs("    {}\n};\n\n", stdout);
}
