// Exported functions: ESC registers and state requests of single slaves.
#include "IgH_Master/FindMaster.h"

#include <igh_master.h>

bool igh_master_read_esc_reg(uint16_t id, uint16_t slave, uint16_t address, uint8_t* data, uint32_t size) {
  return withMaster(id, [=](CEthercatMaster& master) {
    master.readEscReg(slave, address, data, size);
    return true;
  });
}

bool igh_master_write_esc_reg(uint16_t id, uint16_t slave, uint16_t address, uint8_t* data, uint32_t size) {
  return withMaster(id, [=](CEthercatMaster& master) {
    master.writeEscReg(slave, address, data, size);
    return true;
  });
}

bool igh_master_clear_esc_error_regs(uint16_t id, uint16_t slave) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.clearEscErrorRegs(slave); });
}

bool igh_master_clear_all_esc_error_regs(uint16_t id) {
  return withMaster(id, [](CEthercatMaster& master) {
    master.clearAllEscErrorRegs();
    return true;
  });
}

bool igh_master_request_esc_state(uint16_t id, uint16_t slave, uint8_t state) {
  return withMaster(id, [=](CEthercatMaster& master) { return master.requestEscState(slave, state); });
}
