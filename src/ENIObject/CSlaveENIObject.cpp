#include "ENIObject/CSlaveENIObject.h"

#include "XmlParser/XmlParser.h"

#include <cstring>
#include <utility>

CSlaveENIObject::CSlaveENIObject(unsigned int vendorId, unsigned int productCode, unsigned int revisionCode,
                                 std::string smClassName, LOG_FUNCTION log)
    : m_uiVendorId(vendorId), m_uiProductCode(productCode), m_uiRevisionCode(revisionCode),
      m_strSmClassName(std::move(smClassName)), m_pfnLog(log) {}

CSlaveENIObject::~CSlaveENIObject() {
  destroyAllSyncInfo();
}

void CSlaveENIObject::destroyAllSyncInfo() {
  m_mapSyncInfo.clear();
  m_vecSyncIndex.clear();
  m_pPDOEntryArray.reset();
  m_pPDOInfoArray.reset();
  m_pSyncInfoArray.reset();
  m_pPDOEntryReg.reset();
  m_mapEntryRegByName.clear();
  m_mapEntryIndexByName.clear();
  m_vecEntryName.clear();
  m_vecEntryDataType.clear();
  m_uiPDOEntryCount = 0;
  m_uiPDOInfoCount = 0;
  m_uiSyncInfoCount = 0;
}

bool CSlaveENIObject::beginEditSyncInfo() {
  if (m_bEditing) {
    return false;
  }
  destroyAllSyncInfo();
  m_bEditing = true;
  return true;
}

bool CSlaveENIObject::createSyncInfoIfNotExist(unsigned int syncIndex, bool output) {
  if (!m_bEditing) {
    return false;
  }
  const auto [known, isNew] = m_mapSyncInfo.try_emplace(syncIndex);
  if (isNew) {
    known->second.bOutput = output;
    m_vecSyncIndex.push_back(syncIndex);
    return true;
  }
  if (known->second.bOutput != output) {
    reportMessage(m_pfnLog, 0, "Sync output flag not don't matched");
    return false;
  }
  return true;
}

CSlaveENIObject::_SYNCINFO* CSlaveENIObject::getSyncInfo(unsigned int syncIndex) {
  const auto found = m_mapSyncInfo.find(syncIndex);
  return found != m_mapSyncInfo.end() ? &found->second : nullptr;
}

bool CSlaveENIObject::createPDOInfoIfNotExist(_SYNCINFO* syncInfo, unsigned int pdoIndex) {
  if (!m_bEditing) {
    return false;
  }
  if (syncInfo->mapPDOInfo.try_emplace(pdoIndex).second) {
    syncInfo->vecPDOIndex.push_back(pdoIndex);
  }
  return true;
}

CSlaveENIObject::_PDOINFO* CSlaveENIObject::getPDOInfo(_SYNCINFO* syncInfo, unsigned int pdoIndex) {
  if (syncInfo == nullptr) {
    return nullptr;
  }
  const auto found = syncInfo->mapPDOInfo.find(pdoIndex);
  return found != syncInfo->mapPDOInfo.end() ? &found->second : nullptr;
}

bool CSlaveENIObject::addPDOEntry(_PDOINFO* pdoInfo, std::string name, std::string dataType,
                                  const ec_pdo_entry_info_t& entry) {
  if (!m_bEditing) {
    return false;
  }
  pdoInfo->listEntry.push_back({std::move(name), std::move(dataType), entry});
  return true;
}

bool CSlaveENIObject::addDcOpMode(const char* name, const _DCOPMODEINFO& info) {
  return name != nullptr && m_mapDcOpMode.try_emplace(name, info).second;
}

bool CSlaveENIObject::getDCConfiguration(const char* opModeName, unsigned short& assignActivate,
                                         unsigned int& cycleTimeSync0, int& shiftTimeSync0,
                                         unsigned int& cycleTimeSync1, int& shiftTimeSync1) const {
  if (opModeName == nullptr) {
    return false;
  }
  const auto found = m_mapDcOpMode.find(opModeName);
  if (found == m_mapDcOpMode.end()) {
    return false;
  }
  const _DCOPMODEINFO& info = found->second;
  assignActivate = info.assignActivate;
  cycleTimeSync0 = info.cycleTimeSync0;
  shiftTimeSync0 = info.shiftTimeSync0;
  cycleTimeSync1 = info.cycleTimeSync1;
  shiftTimeSync1 = info.shiftTimeSync1;
  return true;
}

bool CSlaveENIObject::getSmClassName(char* buffer, unsigned long& size) const {
  return getBaseStringFromSTLString(m_strSmClassName, buffer, size);
}

bool CSlaveENIObject::getPDOEntryName(unsigned int position, char* buffer, unsigned long& size) const {
  return getBaseStringFromSTLString(m_vecEntryName[position], buffer, size);
}

bool CSlaveENIObject::getPDOEntryDataType(unsigned int position, char* buffer, unsigned long& size) const {
  return getBaseStringFromSTLString(m_vecEntryDataType[position], buffer, size);
}

bool CSlaveENIObject::getBaseStringFromSTLString(const std::string& text, char* buffer, unsigned long& size) {
  return xml_copy_string(text, buffer, size);
}
