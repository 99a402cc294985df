#ifndef ETHERCATOBJECT_CETHERCATMASTERMANAGER_H
#define ETHERCATOBJECT_CETHERCATMASTERMANAGER_H

#include "EthercatObject/CEthercatMaster.h"

#include <map>

// Owns every master of the process by its id. There is one, or none while no master exists; it is made and
// ended only through the static operations.
class CEthercatMasterManager {
public:
  // Keeps the sink of an existing manager.
  static void createUniqueEthercatMasterManager(LOG_FUNCTION log);
  static CEthercatMasterManager* getUniqueEthercatMasterManager() { return m_pUniqueEthercatMasterManager; }
  static void destroyUniqueEthercatMasterManager();

  // Leaves the masters alone: whoever deletes the manager, and does not end it by
  // destroyUniqueEthercatMasterManager(), has to delete them.
  virtual ~CEthercatMasterManager();
  virtual bool createEthercatMaster(unsigned short id, unsigned int period, bool enableDc,
                                    bool syncToReferenceClock);
  // Inline, because every exported function begins with it.
  virtual CEthercatMaster* findEthercatMaster(unsigned short id) {
    const auto found = m_mapMasters.find(id);
    return found == m_mapMasters.end() ? nullptr : found->second;
  }
  virtual bool removeEthercatMaster(unsigned short id);
  virtual void removeAllEthercatMaster();
  virtual unsigned int getEthercatMasterCount();

  CEthercatMasterManager(const CEthercatMasterManager&) = delete;
  CEthercatMasterManager& operator=(const CEthercatMasterManager&) = delete;

private:
  explicit CEthercatMasterManager(LOG_FUNCTION log) : m_pfnLog(log) {}

  static CEthercatMasterManager* m_pUniqueEthercatMasterManager;

  LOG_FUNCTION m_pfnLog;
  std::map<unsigned short, CEthercatMaster*> m_mapMasters; // owned
};

#endif
