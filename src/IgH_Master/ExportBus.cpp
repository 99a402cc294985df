// Exported functions: scan, slaves, activation and the exchange.
#include "IgH_Master/FindMaster.h"

#include <igh_master.h>

bool igh_master_scan(uint16_t id, uint32_t* count) {
  return withMaster(id, [=](CEthercatMaster& master) {
    const bool found = master.scanEthercatSlave(count);
    master.dispConfiguration();
    return found;
  });
}

bool igh_master_get_slave_product_code(uint16_t id, uint32_t slave, uint32_t* productCode) {
  return withMaster(
      id, [=](const CEthercatMaster& master) { return master.getSlaveProductCode(slave, productCode); });
}

bool igh_master_get_slave_revision_code(uint16_t id, uint32_t slave, uint32_t* revisionCode) {
  return withMaster(
      id, [=](const CEthercatMaster& master) { return master.getSlaveRevisionCode(slave, revisionCode); });
}

bool igh_master_config_slave(uint16_t id, uint32_t slave) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.configSlave(slave); });
}

bool igh_master_config_all_slave(uint16_t id) {
  return withMaster(id, [](CEthercatMaster& master) {
    master.configAllSlaves();
    return true;
  });
}

bool igh_master_get_slot_number(uint16_t id, uint32_t slave, uint32_t* slotNumber) {
  return withMaster(
      id, [=](const CEthercatMaster& master) { return master.getSlaveSlotNumber(slave, slotNumber); });
}

bool igh_master_get_slot_index_increment(uint16_t id, uint32_t slave, uint32_t* increment) {
  return withMaster(
      id, [=](const CEthercatMaster& master) { return master.getSlaveSlotIndexIncrement(slave, increment); });
}

bool igh_master_get_slot_pdo_increment(uint16_t id, uint32_t slave, uint32_t* increment) {
  return withMaster(
      id, [=](const CEthercatMaster& master) { return master.getSlaveSlotPdoIncrement(slave, increment); });
}

bool igh_master_active(uint16_t id) {
  return withMaster(id, [](CEthercatMaster& master) { return master.active(); });
}

bool igh_master_exchange(uint16_t id, igh_master_exchange_callback callback, void* userData) {
  return withMaster(id, [=](CEthercatMaster& master) {
    master.exchange(callback, userData);
    return true;
  });
}
