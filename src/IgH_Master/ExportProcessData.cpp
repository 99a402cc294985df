// Exported functions: process-data handles.
#include "IgH_Master/FindMaster.h"

#include <igh_master.h>

bool igh_master_create_pdo_info(uint16_t id, uint32_t slave, const char* name, bool read, uint32_t* handle) {
  return withMaster(id,
                    [=](CEthercatMaster& master) { return master.createPdoInfo(slave, name, read, handle); });
}

void igh_master_destroy_pdo_info(uint16_t id, uint32_t handle, bool read) {
  withMaster(id, [=](CEthercatMaster& master) {
    master.destroyPdoInfo(handle, read);
    return true;
  });
}

bool igh_master_pdo_recv(uint16_t id, uint32_t handle, double* value) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.readPdo(handle, value); });
}

bool igh_master_pdo_send(uint16_t id, uint32_t handle, double value) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.writePdo(handle, value); });
}
