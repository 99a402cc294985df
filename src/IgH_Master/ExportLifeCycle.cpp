// Exported functions: life cycle, control and errors.
#include "IgH_Master/FindMaster.h"
#include "IgH_Master/LogOutput.h"

#include <cstdio>
#include <igh_master.h>

namespace {

constexpr unsigned int MIN_PERIOD_NS = 100000;
constexpr unsigned int MAX_PERIOD_NS = 4000000000U;

} // namespace

bool igh_master_initialize_ex(uint16_t id, uint32_t exchangePeriod, bool enableDc,
                              bool syncToReferenceClock) {
  if (exchangePeriod < MIN_PERIOD_NS || exchangePeriod > MAX_PERIOD_NS) {
    std::printf("Ethercat exchange period should between %u and %u.\n", MIN_PERIOD_NS, MAX_PERIOD_NS);
    return false;
  }
  CEthercatMasterManager::createUniqueEthercatMasterManager(logOutput);
  if (findMaster(id) == nullptr) {
    CEthercatMasterManager::getUniqueEthercatMasterManager()->createEthercatMaster(
        id, exchangePeriod, enableDc, syncToReferenceClock);
  }
  return true;
}

bool igh_master_initialize(uint16_t id, uint32_t exchangePeriod, bool syncToReferenceClock) {
  return igh_master_initialize_ex(id, exchangePeriod, true, syncToReferenceClock);
}

bool igh_master_uninitialize(uint16_t id) {
  CEthercatMasterManager* const manager = CEthercatMasterManager::getUniqueEthercatMasterManager();
  if (manager == nullptr) {
    return true;
  }
  CEthercatMaster* const master = manager->findEthercatMaster(id);
  if (master != nullptr) {
    master->deactive();
  }
  manager->removeEthercatMaster(id);
  if (manager->getEthercatMasterCount() == 0) {
    CEthercatMasterManager::destroyUniqueEthercatMasterManager();
  }
  return true;
}

bool igh_master_set_exchange_mode(uint16_t id, bool exchangeMode) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.setExchangeMode(exchangeMode); });
}

bool igh_master_set_error_callback(uint16_t id, igh_master_error_callback callback, void* userData) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.setErrorCallback(callback, userData); });
}

bool igh_master_get_period(uint16_t id, uint32_t* period) {
  return period != nullptr && withMaster(id, [=](const CEthercatMaster& master) {
           *period = master.getExchangePeriod();
           return true;
         });
}

bool igh_master_get_system_base_offset(uint16_t id, uint64_t* offset) {
  return offset != nullptr && withMaster(id, [=](const CEthercatMaster& master) {
           *offset = static_cast<uint64_t>(master.getSystemBaseOffsetNs());
           return true;
         });
}

bool igh_master_append_eni(uint16_t id, const char* path) {
  return withMaster(id, [=](const CEthercatMaster& master) {
    CMasterENIObject* const descriptions = master.getENIObject();
    return descriptions != nullptr && descriptions->insertENIFile(path, false) != 0;
  });
}

bool igh_master_get_state(uint16_t id, uint32_t* state) {
  return withMaster(id, [=](const CEthercatMaster& master) {
    *state = master.getMasterState();
    return true;
  });
}

bool igh_master_request_terminate(uint16_t id) {
  return withMaster(id, [](CEthercatMaster& master) {
    master.requestTerminate();
    return true;
  });
}

bool igh_master_is_request_terminate(uint16_t id) {
  return withMaster(id, [](const CEthercatMaster& master) { return master.isRequestTerminate(); });
}

bool igh_master_clear_error(uint16_t id) {
  return withMaster(id, [](CEthercatMaster& master) { return master.resetErrorCode(); });
}

bool igh_master_get_last_error(uint16_t id, int32_t* error) {
  return withMaster(id, [=](const CEthercatMaster& master) {
    master.getLastError(*error);
    return true;
  });
}

bool igh_master_enable_eoe_function(uint16_t id, uint32_t slave, bool enable) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.enableEoeFunction(slave, enable); });
}
