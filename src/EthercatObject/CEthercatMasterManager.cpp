#include "EthercatObject/CEthercatMasterManager.h"

CEthercatMasterManager* CEthercatMasterManager::m_pUniqueEthercatMasterManager = nullptr;

void CEthercatMasterManager::createUniqueEthercatMasterManager(LOG_FUNCTION log) {
  if (m_pUniqueEthercatMasterManager == nullptr) {
    m_pUniqueEthercatMasterManager = new CEthercatMasterManager(log);
  }
}

void CEthercatMasterManager::destroyUniqueEthercatMasterManager() {
  if (m_pUniqueEthercatMasterManager == nullptr) {
    return;
  }
  m_pUniqueEthercatMasterManager->removeAllEthercatMaster();
  delete m_pUniqueEthercatMasterManager;
  m_pUniqueEthercatMasterManager = nullptr;
}

bool CEthercatMasterManager::createEthercatMaster(unsigned short id, unsigned int period, bool enableDc,
                                                  bool syncToReferenceClock) {
  if (m_mapMasters.count(id) != 0) {
    return false;
  }
  m_mapMasters.emplace(
      id, std::make_unique<CEthercatMaster>(id, period, enableDc, syncToReferenceClock, m_pfnLog));
  return true;
}

CEthercatMaster* CEthercatMasterManager::findEthercatMaster(unsigned short id) {
  const auto found = m_mapMasters.find(id);
  return found == m_mapMasters.end() ? nullptr : found->second.get();
}

bool CEthercatMasterManager::removeEthercatMaster(unsigned short id) {
  return m_mapMasters.erase(id) != 0;
}

void CEthercatMasterManager::removeAllEthercatMaster() {
  while (!m_mapMasters.empty()) {
    m_mapMasters.erase(m_mapMasters.begin());
  }
}

unsigned int CEthercatMasterManager::getEthercatMasterCount() {
  return static_cast<unsigned int>(m_mapMasters.size());
}
