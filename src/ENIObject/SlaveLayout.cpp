#include "ENIObject/CSlaveENIObject.h"

#include <algorithm>
#include <utility>

void CSlaveENIObject::endEditSyncInfo() {
  if (!m_bEditing) {
    return;
  }
  sortIndexes();
  countSyncInfo();
  allocateArrays();
  fillSyncManagers();
  m_mapSyncInfo.clear();
  m_vecSyncIndex.clear();
  m_bEditing = false;
}

// Once, not at each insertion: a hostile file has very many of them in the worst order.
void CSlaveENIObject::sortIndexes() {
  std::sort(m_vecSyncIndex.begin(), m_vecSyncIndex.end());
  for (auto& [syncIndex, syncInfo] : m_mapSyncInfo) {
    std::sort(syncInfo.vecPDOIndex.begin(), syncInfo.vecPDOIndex.end());
  }
}

void CSlaveENIObject::countSyncInfo() {
  for (const unsigned int syncIndex : m_vecSyncIndex) {
    const _SYNCINFO& syncInfo = m_mapSyncInfo.at(syncIndex);
    for (const unsigned int pdoIndex : syncInfo.vecPDOIndex) {
      m_uiPDOEntryCount += static_cast<unsigned int>(syncInfo.mapPDOInfo.at(pdoIndex).listEntry.size());
    }
    m_uiPDOInfoCount += static_cast<unsigned int>(syncInfo.mapPDOInfo.size());
    ++m_uiSyncInfoCount;
  }
}

void CSlaveENIObject::allocateArrays() {
  m_vecEntryName.resize(m_uiPDOEntryCount);
  m_vecEntryDataType.resize(m_uiPDOEntryCount);
  m_pPDOEntryArray = std::make_unique<ec_pdo_entry_info_t[]>(m_uiPDOEntryCount);
  m_pPDOInfoArray = std::make_unique<ec_pdo_info_t[]>(m_uiPDOInfoCount);
  m_pSyncInfoArray = std::make_unique<ec_sync_info_t[]>(m_uiSyncInfoCount + 1U);
  m_pPDOEntryReg = std::make_unique<ec_pdo_entry_reg_t[]>(m_uiPDOEntryCount + 1U);
}

void CSlaveENIObject::fillSyncManagers() {
  constexpr unsigned char END_OF_LIST = 0xff;
  ec_sync_info_t* sync = m_pSyncInfoArray.get();
  ec_pdo_info_t* pdo = m_pPDOInfoArray.get();
  unsigned int entryPosition = 0;

  for (const unsigned int syncIndex : m_vecSyncIndex) {
    _SYNCINFO& syncInfo = m_mapSyncInfo.at(syncIndex);
    sync->index = static_cast<unsigned char>(syncIndex);
    sync->watchdog_mode = EC_WD_ENABLE;
    sync->dir = syncInfo.bOutput ? EC_DIR_OUTPUT : EC_DIR_INPUT;
    sync->pdos = pdo;
    sync->n_pdos = static_cast<unsigned int>(syncInfo.mapPDOInfo.size());
    for (const unsigned int pdoIndex : syncInfo.vecPDOIndex) {
      _PDOINFO& pdoInfo = syncInfo.mapPDOInfo.at(pdoIndex);
      pdo->index = static_cast<unsigned short>(pdoIndex);
      pdo->entries = &m_pPDOEntryArray[entryPosition];
      pdo->n_entries = static_cast<unsigned int>(pdoInfo.listEntry.size());
      for (_PDOENTRYINFO& entryInfo : pdoInfo.listEntry) {
        fillEntry(entryInfo, entryPosition);
        ++entryPosition;
      }
      ++pdo;
    }
    ++sync;
  }
  sync->index = END_OF_LIST;
}

// Alias, position and the two result pointers of the row are for the user of the list to fill per slave.
void CSlaveENIObject::fillEntry(_PDOENTRYINFO& entryInfo, unsigned int position) {
  m_pPDOEntryArray[position] = entryInfo.entry;

  ec_pdo_entry_reg_t& row = m_pPDOEntryReg[position];
  row.vendor_id = m_uiVendorId;
  row.product_code = m_uiProductCode;
  row.index = entryInfo.entry.index;
  row.subindex = entryInfo.entry.subindex;

  m_vecEntryName[position] = std::move(entryInfo.strName);
  m_vecEntryDataType[position] = std::move(entryInfo.strDataType);
  indexEntryName(position);
}

// The first map remembers the names of earlier edits too: they are reported again.
void CSlaveENIObject::indexEntryName(unsigned int position) {
  const std::string& name = m_vecEntryName[position];
  const bool isNew = m_mapEntryInfoByName.insert_or_assign(name, &m_pPDOEntryArray[position]).second;
  m_mapEntryRegByName.insert_or_assign(name, &m_pPDOEntryReg[position]);
  m_mapEntryIndexByName.insert_or_assign(name, position);
  if (!isNew) {
    reportMessage(m_pfnLog, 0, "PDO Entry Name(%s) conflict，system will overwrite it!\n", name.c_str());
  }
}

ec_pdo_entry_reg_t* CSlaveENIObject::getSlavePDOEntryReg(const char* name, unsigned long& position) const {
  if (name == nullptr) {
    return nullptr;
  }
  const auto row = m_mapEntryRegByName.find(name);
  const auto index = m_mapEntryIndexByName.find(name);
  if (row == m_mapEntryRegByName.end() || index == m_mapEntryIndexByName.end()) {
    return nullptr;
  }
  position = index->second;
  return row->second;
}
