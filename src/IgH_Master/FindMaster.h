#ifndef IGH_MASTER_FINDMASTER_H
#define IGH_MASTER_FINDMASTER_H

#include "EthercatObject/EthercatObject.h"

// The master with this id, or null when it or the whole registry is absent.
inline CEthercatMaster* findMaster(unsigned short id) {
  CEthercatMasterManager* const manager = CEthercatMasterManager::getUniqueEthercatMasterManager();
  // Named in full: nothing overrides it, and so it is no virtual call.
  return manager == nullptr ? nullptr : manager->CEthercatMasterManager::findEthercatMaster(id);
}

// Calls `operation` with the master; false when there is none.
template <class OPERATION> bool withMaster(unsigned short id, OPERATION operation) {
  CEthercatMaster* const master = findMaster(id);
  return master != nullptr && operation(*master);
}

#endif
