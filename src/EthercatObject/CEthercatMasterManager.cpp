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
}

CEthercatMasterManager::~CEthercatMasterManager() {
  m_pUniqueEthercatMasterManager = nullptr;
}

bool CEthercatMasterManager::createEthercatMaster(unsigned short id, unsigned int period, bool enableDc,
                                                  bool syncToReferenceClock) {
  if (m_mapMasters.count(id) != 0) {
    return false;
  }
  // What can fail comes first, so that a master that holds its reservation always has its place.
  std::map<unsigned short, CEthercatMaster*> place{{id, nullptr}};
  place[id] = new CEthercatMaster(id, period, enableDc, syncToReferenceClock, m_pfnLog);
  m_mapMasters.merge(place);
  return true;
}

bool CEthercatMasterManager::removeEthercatMaster(unsigned short id) {
  const auto found = m_mapMasters.find(id);
  if (found == m_mapMasters.end()) {
    return false;
  }
  delete found->second;
  m_mapMasters.erase(found);
  return true;
}

void CEthercatMasterManager::removeAllEthercatMaster() {
  while (!m_mapMasters.empty()) {
    removeEthercatMaster(m_mapMasters.begin()->first);
  }
}

unsigned int CEthercatMasterManager::getEthercatMasterCount() {
  return static_cast<unsigned int>(m_mapMasters.size());
}
