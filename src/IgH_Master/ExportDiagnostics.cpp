// Exported functions: timing records and the debug switch of the clock controller.
#include "IgH_Master/FindMaster.h"

#include <igh_master.h>

bool igh_master_output_comm_diag_info(uint16_t id, const char* label, _ETHERCAT_COMM_DIAG_INFO* info) {
  return withMaster(id, [=](const CEthercatMaster& master) {
    master.outputCommDiagInfo(label, info);
    return true;
  });
}

bool igh_master_get_comm_diag_info(uint16_t id, uint32_t index, _ETHERCAT_COMM_DIAG_INFO* info) {
  return withMaster(id, [=](const CEthercatMaster& master) {
    master.getCommDiagInfo(index, info);
    return true;
  });
}

bool igh_master_set_dc_debug_enable(uint16_t id, bool enable) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.setDcDebugEnable(enable); });
}
