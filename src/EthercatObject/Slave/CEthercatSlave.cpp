#include "EthercatObject/Slave/CEthercatSlave.h"

#include "EthercatObject/CEthercatMaster.h"

#include <cstdio>
#include <cstring>

CEthercatSlave::CEthercatSlave(CEthercatMaster* master, unsigned int index, unsigned int alias,
                               unsigned int position, CSlaveENIObject* description, LOG_FUNCTION log)
    : m_uiSlaveIndex(index), m_uiAlias(alias), m_uiPosition(position),
      m_uiVendorId(description->getVendorId()), m_uiProductCode(description->getProductCode()),
      m_uiRevisionCode(description->getRevisionCode()), m_pEthercatMaster(master), m_pENIObject(description),
      m_pfnLog(log) {
  if (getPdoEntryCount() > 0) {
    m_pPdoEntryOffsets = std::make_unique<_PDO_ENTRY_OFFSET[]>(getPdoEntryCount());
  }
}

CEthercatSlave::CEthercatSlave(CEthercatMaster* master, unsigned int index, unsigned int alias,
                               unsigned int position, unsigned int vendorId, unsigned int productCode,
                               unsigned int revisionCode, LOG_FUNCTION log)
    : m_uiSlaveIndex(index), m_uiAlias(alias), m_uiPosition(position), m_uiVendorId(vendorId),
      m_uiProductCode(productCode), m_uiRevisionCode(revisionCode), m_pEthercatMaster(master),
      m_pENIObject(nullptr), m_pfnLog(log) {}

unsigned int CEthercatSlave::getPdoEntryCount() const {
  return m_pENIObject == nullptr ? 0 : m_pENIObject->getSlavePDOEntryCount();
}

_PDO_ENTRY_OFFSET* CEthercatSlave::getPdoEntryOffset(unsigned int entry) const {
  return entry < getPdoEntryCount() && m_pPdoEntryOffsets != nullptr ? &m_pPdoEntryOffsets[entry] : nullptr;
}

bool CEthercatSlave::configEthercatSlave() {
  ec_master_t* const master = m_pEthercatMaster->getMasterCore();
  dropConfiguration();
  m_bConfigurationWanted = true;
  if (master != nullptr) {
    m_pSlaveConfig =
        ecrt_master_slave_config(master, static_cast<uint16_t>(m_uiAlias),
                                 static_cast<uint16_t>(m_uiPosition), m_uiVendorId, m_uiProductCode);
  }
  if (m_pSlaveConfig != nullptr) {
    const ec_sync_info_t* const layout = m_pENIObject == nullptr ? nullptr : m_pENIObject->getSlaveSyncInfo();
    m_bLayoutTaken = ecrt_slave_config_pdos(m_pSlaveConfig, EC_END, layout) == 0;
  }
  if (!m_bLayoutTaken) {
    std::fputs("Failed to configure PDOs.\n", stderr);
  }
  return m_bLayoutTaken;
}

void CEthercatSlave::dropConfiguration() {
  m_pSlaveConfig = nullptr;
  m_bConfigurationWanted = false;
  m_bLayoutTaken = false;
}

bool CEthercatSlave::initEthercatSlaveDC(unsigned int period) {
  if (m_pENIObject == nullptr || m_pSlaveConfig == nullptr) {
    return false;
  }
  unsigned short assignActivate = 0;
  unsigned int cycle0 = 0;
  int shift0 = 0;
  unsigned int cycle1 = 0;
  int shift1 = 0;
  m_pENIObject->getDCConfiguration("DC", assignActivate, cycle0, shift0, cycle1, shift1);
  if (cycle0 == 0) {
    cycle0 = period;
  }
  if (shift0 == 0) {
    shift0 = static_cast<int>(cycle0 / 2);
  }
  if (assignActivate == 0 || cycle0 == 0) {
    return false;
  }
  std::printf(
      "uiAssignActivate = %X, config dc for slave %d:%d, circle0=%d, shift0 = %d, circle1=%d, shift1 = %d\n",
      static_cast<unsigned int>(assignActivate), static_cast<int>(m_uiAlias), static_cast<int>(m_uiPosition),
      static_cast<int>(cycle0), shift0, static_cast<int>(cycle1), shift1);
  static_cast<void>(ecrt_slave_config_dc(m_pSlaveConfig, assignActivate, cycle0, shift0, cycle1, shift1));
  return true;
}

bool CEthercatSlave::setAsReferenceClock() {
  if (m_pSlaveConfig == nullptr) {
    return false;
  }
  const int result = ecrt_master_select_reference_clock(m_pEthercatMaster->getMasterCore(), m_pSlaveConfig);
  if (result < 0) {
    std::fprintf(stderr, "Failed to select reference clock: %s\n", std::strerror(-result));
    return false;
  }
  return true;
}
