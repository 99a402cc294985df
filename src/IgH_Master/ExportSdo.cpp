// Exported functions: SDO requests. The one-value forms are arrays of one.
#include "IgH_Master/FindMaster.h"

#include <igh_master.h>

bool igh_master_create_raw_sdo_request(uint16_t id, uint32_t slave, uint16_t index, uint8_t subindex,
                                       uint32_t size, int32_t timeoutMs, bool read, uint32_t* handle) {
  return withMaster(id, [=](CEthercatMaster& master) {
    return master.createRawSdoRequest(slave, index, subindex, DATA_TYPE_RAW, size, timeoutMs, read, handle);
  });
}

bool igh_master_create_raw_sdo_request_complete(uint16_t id, uint32_t slave, uint16_t index, uint32_t size,
                                                int32_t timeoutMs, bool read, uint32_t* handle) {
  return withMaster(id, [=](CEthercatMaster& master) {
    return master.createRawSdoRequestComplete(slave, index, DATA_TYPE_RAW, size, timeoutMs, read, handle);
  });
}

bool igh_master_create_sdo_request_ex(uint16_t id, uint32_t slave, uint16_t index, uint8_t subindex,
                                      ETHERCAT_DATA_TYPE type, uint32_t count, int32_t timeoutMs, bool read,
                                      uint32_t* handle) {
  return withMaster(id, [=](CEthercatMaster& master) {
    return master.createSdoRequestEx(slave, index, subindex, type, count, timeoutMs, read, handle);
  });
}

bool igh_master_create_sdo_request(uint16_t id, uint32_t slave, uint16_t index, uint8_t subindex,
                                   ETHERCAT_DATA_TYPE type, int32_t timeoutMs, bool read, uint32_t* handle) {
  return igh_master_create_sdo_request_ex(id, slave, index, subindex, type, 1, timeoutMs, read, handle);
}

void igh_master_destroy_sdo_request(uint16_t id, uint32_t handle, bool read) {
  withMaster(id, [=](CEthercatMaster& master) {
    master.destroySdoRequest(handle, read);
    return true;
  });
}

bool igh_master_raw_sdo_recv(uint16_t id, uint32_t handle, void* data, uint32_t size, bool* done) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.rawSdoRecv(handle, data, size, done); });
}

bool igh_master_raw_sdo_send(uint16_t id, uint32_t handle, const void* data, uint32_t size, bool* done) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.rawSdoSend(handle, data, size, done); });
}

bool igh_master_sdo_recv_ex(uint16_t id, uint32_t handle, double* values, uint32_t count, bool* done) {
  return withMaster(id,
                    [=](CEthercatMaster& master) { return master.readSdoEx(handle, values, count, done); });
}

bool igh_master_sdo_recv(uint16_t id, uint32_t handle, double* value, bool* done) {
  return igh_master_sdo_recv_ex(id, handle, value, 1, done);
}

bool igh_master_sdo_send_ex(uint16_t id, uint32_t handle, const double* values, uint32_t count, bool* done) {
  return withMaster(id,
                    [=](CEthercatMaster& master) { return master.writeSdoEx(handle, values, count, done); });
}

bool igh_master_sdo_send(uint16_t id, uint32_t handle, double value, bool* done) {
  return igh_master_sdo_send_ex(id, handle, &value, 1, done);
}

bool igh_master_process_sdo_immediately(uint16_t id, uint32_t handle) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.processSdoImmediately(handle); });
}
