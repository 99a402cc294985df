// Face of this floor: masters, their slaves and the process-wide registry.
#ifndef ETHERCATOBJECT_ETHERCATOBJECT_H
#define ETHERCATOBJECT_ETHERCATOBJECT_H

#include "EthercatObject/CEthercatMaster.h"
#include "EthercatObject/CEthercatMasterManager.h"
#include "EthercatObject/Slave/CEthercatSlave.h"

#endif
